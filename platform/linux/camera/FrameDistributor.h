#pragma once

#include "platform/CaptureServices.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/camera/CameraStack.h"
#include "platform/linux/camera/FrameDecoder.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Hands one camera's frames to previews, each decoded once for all of them and only if one wants it, and to
/// photos. The newest frame counts; nothing queues.
class FrameDistributor : public FrameSink, public std::enable_shared_from_this<FrameDistributor> {
public:
    /// `mainQueue` outlives everything that is made here.
    static std::shared_ptr<FrameDistributor> make(Platform::MainQueue& mainQueue);
    FrameDistributor(const FrameDistributor&) = delete;
    FrameDistributor& operator=(const FrameDistributor&) = delete;
    ~FrameDistributor() override;

    void onFrame(const VideoFrame& frame) override;
    void onDark() override;

    /// Before a feed begins to deliver, and after it has ended. Closed, there is no picture and no photo. Any
    /// thread.
    void open();
    void close();

    /// Main thread only.
    std::unique_ptr<Platform::VideoPreview> makePreview(std::function<void()> onPictureChanged);
    /// The next frame that is worth it becomes the photo. Ends without a photo while there is no camera, and
    /// when it goes first: nobody wants the photo of a moment long after. Any thread.
    void capturePhoto(const std::weak_ptr<Platform::PhotoReceiver>& receiver);

private:
    class Preview;
    struct Size {
        int width = 0;
        int height = 0;
    };

    explicit FrameDistributor(Platform::MainQueue& mainQueue);
    void answerPhotos(const VideoFrame& frame);
    /// Without a photo, and so do later ones until there is a camera again.
    void endPhotos();
    void setPicture(std::shared_ptr<const Platform::Picture> picture);
    /// Picks the largest size that a preview wants, with the lock held.
    void updateWanted();
    void setSize(Preview& preview, Size size);
    std::shared_ptr<const Platform::Picture> picture() const;
    void leave(Preview& preview);

    Platform::MainQueue& mainQueue_;
    /// Of the feed's thread.
    std::optional<FrameDecoder> decoder_;
    /// Of the main thread.
    Platform::Subscribers<> changes_;
    mutable std::mutex mutex_;
    std::vector<Preview*> previews_;
    Size wanted_;
    std::shared_ptr<const Platform::Picture> picture_;
    bool isNewsOnItsWay_ = false;
    /// Or expects one that has just been opened.
    bool hasCamera_ = false;
    std::vector<std::weak_ptr<Platform::PhotoReceiver>> receivers_;
};

} // namespace LinuxPlatform
