#pragma once

#include <chrono>
#include <optional>

namespace LinuxPlatform {

/// One road on which programs get at the picture of the screen. Main thread only.
class CaptureWatch {
public:
    virtual ~CaptureWatch() = default;

    /// Whether some program takes the picture of the screen on this road at present; absent while that cannot
    /// be seen. Cheap, and waits for nobody but the X server.
    virtual std::optional<bool> isScreenCaptured() = 0;

    /// How long a capture may pause.
    static constexpr std::chrono::seconds memory{10};
};

} // namespace LinuxPlatform
