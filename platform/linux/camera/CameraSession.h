#pragma once

#include "platform/CaptureServices.h"
#include "platform/MainQueue.h"
#include "platform/WorkQueue.h"
#include "platform/linux/camera/CameraStack.h"
#include "platform/linux/camera/FrameDistributor.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// A camera of one of the stacks.
class CameraInput : public Platform::CaptureInput {
public:
    CameraInput(Platform::CaptureDevice device, std::shared_ptr<CameraStack> stack);

    const Platform::CaptureDevice& device() const override;
    CameraStack& stack() const;

private:
    Platform::CaptureDevice device_;
    std::shared_ptr<CameraStack> stack_;
};

class CameraPhotoOutput;

/// A session with at most one camera and one photo output.
class CameraSession : public Platform::CaptureSession {
public:
    /// `mainQueue` outlives the session. The queue of its own opens and closes cameras for the main thread,
    /// which waits for no driver.
    CameraSession(Platform::MainQueue& mainQueue, std::unique_ptr<Platform::WorkQueue> workQueue);
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;
    ~CameraSession() override;

    void beginConfiguration() override;
    void commitConfiguration() override;
    std::vector<std::shared_ptr<Platform::CaptureInput>> inputs() const override;
    void removeInput(const std::shared_ptr<Platform::CaptureInput>& input) override;
    bool canAddInput(const std::shared_ptr<Platform::CaptureInput>& input) const override;
    void addInput(const std::shared_ptr<Platform::CaptureInput>& input) override;
    std::vector<std::shared_ptr<Platform::PhotoOutput>> outputs() const override;
    bool canAddOutput(const std::shared_ptr<Platform::PhotoOutput>& output) const override;
    void addOutput(const std::shared_ptr<Platform::PhotoOutput>& output) override;
    bool isRunning() const override;
    void startRunning() override;
    void stopRunning() override;
    std::optional<Platform::CaptureInterruption> interruption() const override;
    Platform::Subscription observeInterruption(std::function<void()> onChanged) override;
    std::unique_ptr<Platform::VideoPreview> makePreview(std::function<void()> onPictureChanged) override;

    /// While the computer sleeps, the camera is let go, of a running session too, which picks it up
    /// afterwards. Waits a moment for a camera to be let go.
    void setSuspended(bool isSuspended);

private:
    /// Makes the input count.
    void commit();
    std::shared_ptr<CameraInput> wantedInput() const;
    /// Opens and closes the feed as the committed input and `isRunning_` ask for. May block.
    void apply();
    /// The same, some time soon.
    void applyElsewhere();
    void closeFeed();

    std::shared_ptr<FrameDistributor> distributor_;
    std::shared_ptr<CameraPhotoOutput> output_;
    int openConfigurations_ = 0;
    std::shared_ptr<CameraInput> input_;

    std::atomic<bool> isRunning_ = false;
    /// Held for moments only.
    mutable std::mutex wishMutex_;
    std::condition_variable applied_;
    bool isSuspended_ = false;
    /// The input as last committed.
    std::shared_ptr<CameraInput> committedInput_;
    /// Of the feed that is open.
    std::shared_ptr<CameraInput> feedInput_;
    /// Held while cameras are opened and closed.
    std::mutex feedMutex_;
    std::unique_ptr<CameraFeed> feed_;
    /// Goes first.
    std::unique_ptr<Platform::WorkQueue> workQueue_;
};

/// Takes the next frame of the session that it was added to.
class CameraPhotoOutput : public Platform::PhotoOutput {
public:
    std::vector<Platform::PhotoCodec> availablePhotoCodecTypes() const override;
    void capturePhoto(const Platform::PhotoSettings& settings,
                      std::weak_ptr<Platform::PhotoReceiver> receiver) override;

    /// Called by the session that it is added to.
    void attach(std::weak_ptr<FrameDistributor> distributor);

private:
    std::weak_ptr<FrameDistributor> distributor_;
};

} // namespace LinuxPlatform
