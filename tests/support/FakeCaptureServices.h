#pragma once

#include "platform/CaptureServices.h"
#include "platform/Subscribers.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace TestSupport {

/// One colour everywhere.
inline std::shared_ptr<const Platform::Picture> plainPicture(int width, int height, unsigned red,
                                                             unsigned green, unsigned blue) {
    auto picture = std::make_shared<Platform::Picture>();
    picture->width = width;
    picture->height = height;
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture->pixels.resize(count * 4);
    for (std::size_t pixel = 0; pixel < count; ++pixel) {
        picture->pixels[pixel * 4] = static_cast<std::byte>(blue);
        picture->pixels[pixel * 4 + 1] = static_cast<std::byte>(green);
        picture->pixels[pixel * 4 + 2] = static_cast<std::byte>(red);
        picture->pixels[pixel * 4 + 3] = std::byte{0xFF};
    }
    return picture;
}

inline std::vector<std::byte> bytesOf(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

class FakeCaptureInput : public Platform::CaptureInput {
public:
    explicit FakeCaptureInput(Platform::CaptureDevice device) : device_(std::move(device)) {}

    const Platform::CaptureDevice& device() const override { return device_; }

private:
    Platform::CaptureDevice device_;
};

class FakePhotoOutput : public Platform::PhotoOutput {
public:
    std::vector<Platform::PhotoCodec> codecs{Platform::PhotoCodec::jpeg};
    /// The settings of all captures.
    std::vector<Platform::PhotoSettings> captures;

    std::vector<Platform::PhotoCodec> availablePhotoCodecTypes() const override { return codecs; }

    void capturePhoto(const Platform::PhotoSettings& settings,
                      std::weak_ptr<Platform::PhotoReceiver> receiver) override {
        captures.push_back(settings);
        receivers_.push_back(std::move(receiver));
    }

    /// Ends every capture that waits, on the caller's thread; returns how many receivers were still alive.
    int finish(const std::optional<std::vector<std::byte>>& data) {
        int alive = 0;
        for (const auto& weak : std::exchange(receivers_, {})) {
            if (const auto receiver = weak.lock()) {
                ++alive;
                receiver->didFinishProcessingPhoto({data});
            }
        }
        return alive;
    }

    int aliveReceivers() const {
        return static_cast<int>(
            std::ranges::count_if(receivers_, [](const auto& weak) { return !weak.expired(); }));
    }

private:
    std::vector<std::weak_ptr<Platform::PhotoReceiver>> receivers_;
};

/// A session that shows the pictures that the test hands it.
class FakeCaptureSession : public Platform::CaptureSession {
public:
    /// What was done to the session, in order; "add NAME" and "remove NAME" for inputs.
    std::vector<std::string> calls;
    bool acceptsInputs = true;
    bool acceptsOutputs = true;
    /// Runs while the session starts, on the thread that starts it.
    std::function<void()> onStarting;

    void beginConfiguration() override { calls.emplace_back("begin"); }
    void commitConfiguration() override { calls.emplace_back("commit"); }

    std::vector<std::shared_ptr<Platform::CaptureInput>> inputs() const override { return inputs_; }
    void removeInput(const std::shared_ptr<Platform::CaptureInput>& input) override {
        calls.push_back("remove " + input->device().uniqueID);
        std::erase(inputs_, input);
    }
    bool canAddInput(const std::shared_ptr<Platform::CaptureInput>& input) const override {
        return acceptsInputs && input && inputs_.empty();
    }
    void addInput(const std::shared_ptr<Platform::CaptureInput>& input) override {
        calls.push_back("add " + input->device().uniqueID);
        inputs_.push_back(input);
    }

    std::vector<std::shared_ptr<Platform::PhotoOutput>> outputs() const override { return outputs_; }
    bool canAddOutput(const std::shared_ptr<Platform::PhotoOutput>& output) const override {
        return acceptsOutputs && output && outputs_.empty();
    }
    void addOutput(const std::shared_ptr<Platform::PhotoOutput>& output) override {
        calls.emplace_back("add output");
        outputs_.push_back(output);
    }

    bool isRunning() const override { return isRunning_; }
    void startRunning() override {
        calls.emplace_back("start");
        if (onStarting) {
            onStarting();
        }
        isRunning_ = true;
    }
    void stopRunning() override {
        calls.emplace_back("stop");
        isRunning_ = false;
    }

    std::optional<Platform::CaptureInterruption> interruption() const override { return interruption_; }
    Platform::Subscription observeInterruption(std::function<void()> onChanged) override {
        return interruptionChanged_.add(std::move(onChanged));
    }
    void interrupt(std::optional<Platform::CaptureInterruption> why) {
        interruption_ = why;
        interruptionChanged_.tell();
    }

    std::unique_ptr<Platform::VideoPreview> makePreview(std::function<void()> onPictureChanged) override {
        return std::make_unique<Preview>(*this, std::move(onPictureChanged));
    }

    /// Shows it in every preview; null for darkness.
    void show(std::shared_ptr<const Platform::Picture> picture) {
        *picture_ = std::move(picture);
        changed_.tell();
    }

    /// The size that a preview asked for last.
    std::pair<int, int> previewSize() const { return *previewSize_; }

private:
    class Preview : public Platform::VideoPreview {
    public:
        Preview(FakeCaptureSession& session, std::function<void()> onPictureChanged)
            : picture_(session.picture_),
              size_(session.previewSize_),
              changes_(session.changed_.add(std::move(onPictureChanged))) {}
        Preview(const Preview&) = delete;
        Preview& operator=(const Preview&) = delete;
        ~Preview() override { *size_ = {0, 0}; }

        void setSize(int width, int height) override { *size_ = {width, height}; }
        std::shared_ptr<const Platform::Picture> picture() const override {
            return size_->first > 0 && size_->second > 0 ? *picture_ : nullptr;
        }

    private:
        std::shared_ptr<std::shared_ptr<const Platform::Picture>> picture_;
        std::shared_ptr<std::pair<int, int>> size_;
        Platform::Subscription changes_;
    };

    std::vector<std::shared_ptr<Platform::CaptureInput>> inputs_;
    std::vector<std::shared_ptr<Platform::PhotoOutput>> outputs_;
    std::atomic<bool> isRunning_ = false;
    std::shared_ptr<std::shared_ptr<const Platform::Picture>> picture_ =
        std::make_shared<std::shared_ptr<const Platform::Picture>>();
    std::shared_ptr<std::pair<int, int>> previewSize_ = std::make_shared<std::pair<int, int>>();
    Platform::Subscribers<> changed_;
    std::optional<Platform::CaptureInterruption> interruption_;
    Platform::Subscribers<> interruptionChanged_;
};

/// Cameras of the test's own. The session and the photo output are the same ones whoever asks.
class FakeCaptureServices : public Platform::CaptureServices {
public:
    std::vector<Platform::CaptureDevice> cameras;
    std::optional<Platform::CaptureDevice> defaultCamera;
    /// Cameras that cannot be used.
    std::vector<std::string> broken;
    std::shared_ptr<FakeCaptureSession> session = std::make_shared<FakeCaptureSession>();
    std::shared_ptr<FakePhotoOutput> photoOutput = std::make_shared<FakePhotoOutput>();
    /// Everything else is no image.
    std::vector<std::byte> image = bytesOf("image");
    std::shared_ptr<const Platform::Picture> decodedImage = plainPicture(2, 1, 10, 20, 30);

    int preparations = 0;
    /// The thread that decoded an image last.
    std::thread::id decodedOn;

    void prepare() override { ++preparations; }
    std::vector<Platform::CaptureDevice> devices() override { return cameras; }
    std::optional<Platform::CaptureDevice> defaultDevice() override { return defaultCamera; }
    Platform::Subscription observeDevices(std::function<void()> onChanged) override {
        return devicesChanged_.add(std::move(onChanged));
    }
    /// Cameras have come or gone.
    void tellOfDevices() { devicesChanged_.tell(); }
    std::shared_ptr<Platform::CaptureInput> makeInput(const Platform::CaptureDevice& device) override {
        if (std::ranges::count(broken, device.uniqueID) > 0) {
            return nullptr;
        }
        return std::make_shared<FakeCaptureInput>(device);
    }
    std::shared_ptr<Platform::PhotoOutput> makePhotoOutput() override { return photoOutput; }
    std::shared_ptr<Platform::CaptureSession> makeSession() override { return session; }
    std::shared_ptr<const Platform::Picture> decodeImage(const std::vector<std::byte>& encoded) override {
        decodedOn = std::this_thread::get_id();
        return encoded == image ? decodedImage : nullptr;
    }

private:
    Platform::Subscribers<> devicesChanged_;
};

} // namespace TestSupport
