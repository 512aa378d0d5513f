#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoFrame.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Takes what one camera delivers. Called on the feed's thread.
class FrameSink {
public:
    virtual ~FrameSink() = default;

    /// False for a frame of which nothing could be shown, though it was wanted.
    virtual bool onFrame(const VideoFrame& frame) = 0;
    /// The camera is not there or delivers nothing; frames may follow later. One that is only slow to begin
    /// is not dark yet. May be called more than once.
    virtual void onDark(Platform::CaptureInterruption why) = 0;
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
    /// `callback` is called on some thread when one of the two above may have another answer than before,
    /// until the stack ends. It asks nothing of the stack. Before the first of all questions.
    virtual void onDevicesChanged(std::function<void()> callback) = 0;
    /// Any thread. `sink` outlives the feed. Returns at once, whether the camera is there or not.
    virtual std::unique_ptr<CameraFeed> open(const std::string& uniqueID, FrameSink& sink) = 0;
};

} // namespace LinuxPlatform
