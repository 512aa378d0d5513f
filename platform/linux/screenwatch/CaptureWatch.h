#pragma once

namespace LinuxPlatform {

/// One road on which programs get at the picture of the screen. Main thread only.
class CaptureWatch {
public:
    virtual ~CaptureWatch() = default;

    /// Whether some program takes the picture of the screen on this road at present. Cheap, and waits for
    /// nobody but the X server.
    virtual bool isScreenCaptured() = 0;
};

} // namespace LinuxPlatform
