#pragma once

namespace Platform {

/// Makes the pieces of the microphone check.
class AudioServices {
public:
    virtual ~AudioServices() = default;

    /// Whether there is a microphone, as far as it is known now. Does not block.
    virtual bool hasInputDevice() = 0;
};

} // namespace Platform
