#pragma once

#include "platform/linux/camera/CameraStack.h"
#include "platform/linux/camera/PictureWatch.h"
#include "platform/linux/camera/pipewire/PipeWireConnection.h"
#include "platform/linux/camera/pipewire/ProducerMemory.h"
#include "platform/linux/system/GrowingPause.h"

#include <array>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// A stream of one camera, made whenever the camera is there, and made anew when it fails or falls silent.
/// Belongs to the thread of its connection.
class PipeWireFeed : public CameraFeed {
public:
    PipeWireFeed(PipeWireConnection& connection, std::string uniqueID, FrameSink& sink);
    PipeWireFeed(const PipeWireFeed&) = delete;
    PipeWireFeed& operator=(const PipeWireFeed&) = delete;
    ~PipeWireFeed() override;

    // For the connection.

    void begin();
    void end();
    /// Follows the camera. Never called from a callback of the stream.
    void reconcile();
    /// The daemon is gone, and the stream with it.
    void lose();

private:
    void open();
    bool connect();
    void closeStream();
    /// To be dealt with once the present callback has returned.
    void fail(Platform::CaptureInterruption why);
    void dealWithFailure();
    void onTimer();
    /// Whether the camera has been told its format, and is still getting ready.
    bool isNegotiating() const;
    void onStateChanged(pw_stream_state old, pw_stream_state state, const char* error);
    void onParamChanged(std::uint32_t id, const spa_pod* param);
    void onProcess();
    void deliver(const spa_buffer& buffer);

    PipeWireConnection& connection_;
    std::string uniqueID_;
    FrameSink& sink_;
    /// The next attempt after a failure, else the next look at the watch.
    std::optional<PipeWireTimer> timer_;
    PipeWireOwned<pw_stream> stream_;
    spa_hook hook_{};
    std::optional<std::uint64_t> serial_;
    std::optional<VideoFormat> format_;
    std::array<ProducerMemory, 3> memory_;
    std::optional<Platform::CaptureInterruption> failure_;
    bool hasDelivered_ = false;
    /// Of the present stream.
    bool hasStreamed_ = false;
    /// It has had more time than a camera usually needs, and this is to be said.
    bool hasTakenLong_ = false;
    GrowingPause refusalPause_;
    PictureWatch watch_;
};

} // namespace LinuxPlatform
