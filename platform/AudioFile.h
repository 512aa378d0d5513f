#pragma once

#include "platform/AudioFormat.h"

namespace Platform {

/// A recording in the making, a file in the Core Audio Format. Its destruction completes and closes the
/// file. Any thread, one at a time.
class AudioFile {
public:
    virtual ~AudioFile() = default;

    /// Appends the buffer. False when it could not be written, or has another format than the file.
    virtual bool write(const AudioPCMBuffer& buffer) = 0;
};

} // namespace Platform
