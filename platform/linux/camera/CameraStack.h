#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoFrame.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Takes what one camera delivers. Called on the feed's thread.
class FrameSink {
public:
    virtual ~FrameSink() = default;

    virtual void onFrame(const VideoFrame& frame) = 0;
    /// The camera is not there or has stopped; frames may follow later. One that is only slow to begin is not
    /// dark yet. May be called more than once.
    virtual void onDark() = 0;
};

/// Keeps one camera at work, whenever it is there, for as long as the feed lives. After its destruction,
/// which may block for a moment, the camera is let go and the sink is not called any more.
class CameraFeed {
public:
    virtual ~CameraFeed() = default;
};

/// One way to cameras.
class CameraStack {
public:
    virtual ~CameraStack() = default;

    /// Main thread only. In the order of discovery. The first call may wait a moment, later ones do not.
    virtual std::vector<Platform::CaptureDevice> devices() = 0;
    virtual std::optional<Platform::CaptureDevice> defaultDevice() = 0;
    /// Any thread. `sink` outlives the feed. Returns at once, whether the camera is there or not.
    virtual std::unique_ptr<CameraFeed> open(const std::string& uniqueID, FrameSink& sink) = 0;
};

} // namespace LinuxPlatform
