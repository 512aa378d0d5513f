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

    bool onFrame(const VideoFrame& frame) override;
    void onDark(Platform::CaptureInterruption why) override;

    /// Before a feed begins to deliver, and after it has ended. Closed, there is no picture and no photo. Any
    /// thread.
    void open();
    void close();

    /// Main thread only.
    std::unique_ptr<Platform::VideoPreview> makePreview(std::function<void()> onPictureChanged);
    Platform::Subscription observeInterruption(std::function<void()> onChanged);
    /// Any thread.
    std::optional<Platform::CaptureInterruption> interruption() const;
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
    /// False for a frame that photos wait for in vain.
    bool answerPhotos(const VideoFrame& frame);
    /// False for a frame that previews wait for in vain.
    bool showInPreviews(const VideoFrame& frame);
    /// Without a photo, and so do later ones until there is a camera again.
    void endPhotos();
    void setPicture(std::shared_ptr<const Platform::Picture> picture);
    void setInterruption(std::optional<Platform::CaptureInterruption> interruption);
    /// Has the main thread tell them and take the mark back.
    void tell(Platform::Subscribers<> FrameDistributor::*subscribers, bool FrameDistributor::*isOnItsWay);
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
    Platform::Subscribers<> interruptionChanges_;
    mutable std::mutex mutex_;
    std::vector<Preview*> previews_;
    Size wanted_;
    std::shared_ptr<const Platform::Picture> picture_;
    bool isNewsOnItsWay_ = false;
    std::optional<Platform::CaptureInterruption> interruption_;
    bool isInterruptionOnItsWay_ = false;
    /// Or expects one that has just been opened.
    bool hasCamera_ = false;
    std::vector<std::weak_ptr<Platform::PhotoReceiver>> receivers_;
};

} // namespace LinuxPlatform
