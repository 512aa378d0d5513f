#pragma once

#include "platform/linux/camera/CameraStack.h"

#include <functional>
#include <memory>

namespace LinuxPlatform {

class PipeWireConnection;

/// The cameras of a PipeWire daemon, on a thread of its own that exists from the first use on. A daemon that
/// comes, goes or comes back is noticed by the next call, and by a feed within half a second.
class PipeWireCameras : public CameraStack {
public:
    /// A connected socket of the daemon, which the caller owns; negative for none.
    using Connector = std::function<int()>;

    /// Without a connector, the daemon of the session.
    explicit PipeWireCameras(Connector connector = nullptr);
    PipeWireCameras(const PipeWireCameras&) = delete;
    PipeWireCameras& operator=(const PipeWireCameras&) = delete;
    /// The feeds have ended before.
    ~PipeWireCameras() override;

    /// Begins to ask the daemon what there is, without waiting for its answer.
    void prepare();
    std::vector<Platform::CaptureDevice> devices() override;
    std::optional<Platform::CaptureDevice> defaultDevice() override;
    std::unique_ptr<CameraFeed> open(const std::string& uniqueID, FrameSink& sink) override;
    void onDevicesChanged(std::function<void()> callback) override;

    /// Whether there is a daemon that answers. Main thread only; may wait like `devices`.
    bool isReachable();
    /// Whether it also has somebody who tells it of cameras, or a camera all the same. May wait like
    /// `devices`.
    bool isInCharge();

private:
    std::unique_ptr<PipeWireConnection> connection_;
};

} // namespace LinuxPlatform
