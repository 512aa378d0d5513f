#include "platform/linux/camera/V4l2Cameras.h"

#include "tests/platform/camera/FakeVideoDevices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <utility>

namespace {

using LinuxPlatform::PixelLayout;
using LinuxPlatform::V4l2Cameras;
using LinuxPlatform::VideoFormat;
using Platform::CaptureDevice;
using Platform::CaptureInterruption;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeVideoDevice;
using TestSupport::FakeVideoDevices;

constexpr auto patience = std::chrono::seconds(20);

struct RecordingSink : LinuxPlatform::FrameSink {
    struct Frame {
        VideoFormat format;
        int stride = 0;
        std::vector<std::byte> data;
    };

    bool onFrame(const LinuxPlatform::VideoFrame& frame) override {
        const auto& plane = frame.planes[0];
        if (onFrameTaken) {
            onFrameTaken();
        }
        add([&] { frames.push_back({frame.format, plane.stride, {plane.data.begin(), plane.data.end()}}); });
        return canBeShown;
    }
    void onDark(Platform::CaptureInterruption why) override {
        add([&] {
            ++darks;
            reasons.push_back(why);
        });
    }

    template <class Condition>
    bool waitUntil(const Condition& condition) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, condition);
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Frame> frames;
    int darks = 0;
    std::vector<Platform::CaptureInterruption> reasons;
    /// Whether the frames can be decoded.
    std::atomic<bool> canBeShown = true;
    /// Called on the feed's thread.
    std::function<void()> onFrameTaken;

private:
    template <class Change>
    void add(const Change& change) {
        {
            const std::scoped_lock lock(mutex);
            change();
        }
        changed.notify_all();
    }
};

struct V4l2CamerasTest : testing::Test {
    TestSupport::TemporaryFolder system;
    std::shared_ptr<FakeVideoDevices> devices = std::make_shared<FakeVideoDevices>();
    std::unique_ptr<V4l2Cameras> cameras = std::make_unique<V4l2Cameras>(devices, system.path());
    RecordingSink sink;

    std::shared_ptr<FakeVideoDevice> plugIn(const std::string& path, const std::string& card = "Camera",
                                            const std::string& bus = "usb-1") {
        auto device = std::make_shared<FakeVideoDevice>();
        device->card = card;
        device->bus = bus;
        const std::scoped_lock lock(devices->mutex);
        devices->byPath[path] = device;
        return device;
    }

    template <class Change>
    void change(const Change& what) {
        const std::scoped_lock lock(devices->mutex);
        what();
    }

    void deliver(FakeVideoDevice& device, const std::vector<std::byte>& frame) {
        change([&] { device.frames.push_back(frame); });
    }

    /// With the devices' lock.
    bool waitFor(const std::function<bool()>& condition) {
        return eventually([&] {
            const std::scoped_lock lock(devices->mutex);
            return condition();
        });
    }

    static bool eventually(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (std::chrono::steady_clock::now() < end) {
            if (condition()) {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }
};

const std::vector frame{std::byte{1}, std::byte{2}, std::byte{3}};

TEST_F(V4l2CamerasTest, OnlyCamerasWithALayoutThatCanBeReadAreListed) {
    plugIn("/dev/video0", "Camera", "usb-1");
    plugIn("/dev/video1", "Metadata", "usb-1")->abilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    plugIn("/dev/video2", "Output", "usb-2")->abilities = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING;
    plugIn("/dev/video3", "Depth", "usb-3")->formats = {V4L2_PIX_FMT_Z16};
    plugIn("/dev/video4", "Forbidden", "usb-4")->isAllowed = false;
    EXPECT_THAT(cameras->devices(), ElementsAre(CaptureDevice{"v4l2:usb-1", "Camera"}));
    EXPECT_EQ(cameras->defaultDevice(), std::nullopt);
    EXPECT_EQ(devices->opened, 0) << "looking leaves nothing open";
}

TEST_F(V4l2CamerasTest, CamerasWithTheSameNameAndPlugAreToldApart) {
    plugIn("/dev/video0", "Camera", "usb-1");
    plugIn("/dev/video2", "Camera", "usb-1");
    EXPECT_THAT(cameras->devices(), ElementsAre(CaptureDevice{"v4l2:usb-1", "Camera"},
                                                CaptureDevice{"v4l2:usb-1#2", "Camera (2)"}));
}

TEST_F(V4l2CamerasTest, JpegIsPreferredAndItsBytesArriveUnchanged) {
    const auto device = plugIn("/dev/video0");
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    EXPECT_EQ(sink.frames.front().format, (VideoFormat{PixelLayout::jpeg, 1280, 720}));
    EXPECT_EQ(sink.frames.front().data, frame);
}

TEST_F(V4l2CamerasTest, RawFramesBringTheDriversSizeAndStride) {
    const auto device = plugIn("/dev/video0");
    device->formats = {V4L2_PIX_FMT_GREY, V4L2_PIX_FMT_YUYV};
    device->forcedWidth = 352;
    device->forcedHeight = 288;
    device->bytesPerLine = 768;
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    EXPECT_EQ(sink.frames.front().format, (VideoFormat{PixelLayout::yuyv, 352, 288}));
    EXPECT_EQ(sink.frames.front().stride, 768);
}

TEST_F(V4l2CamerasTest, ColorsAreWhatTheDriverSaysOrTheKernelsRules) {
    using LinuxPlatform::ColorMatrix;
    using LinuxPlatform::ColorRange;
    struct Case {
        std::uint32_t colorspace;
        std::uint32_t encoding;
        std::uint32_t quantization;
        ColorRange range;
        ColorMatrix matrix;
    };
    const std::vector<Case> cases{{V4L2_COLORSPACE_DEFAULT, V4L2_YCBCR_ENC_DEFAULT, V4L2_QUANTIZATION_DEFAULT,
                                   ColorRange::limited, ColorMatrix::bt601},
                                  {V4L2_COLORSPACE_SRGB, V4L2_YCBCR_ENC_DEFAULT, V4L2_QUANTIZATION_DEFAULT,
                                   ColorRange::limited, ColorMatrix::bt601},
                                  {V4L2_COLORSPACE_JPEG, V4L2_YCBCR_ENC_DEFAULT, V4L2_QUANTIZATION_DEFAULT,
                                   ColorRange::full, ColorMatrix::bt601},
                                  {V4L2_COLORSPACE_REC709, V4L2_YCBCR_ENC_DEFAULT, V4L2_QUANTIZATION_DEFAULT,
                                   ColorRange::limited, ColorMatrix::bt709},
                                  {V4L2_COLORSPACE_SRGB, V4L2_YCBCR_ENC_709, V4L2_QUANTIZATION_FULL_RANGE,
                                   ColorRange::full, ColorMatrix::bt709},
                                  {V4L2_COLORSPACE_JPEG, V4L2_YCBCR_ENC_601, V4L2_QUANTIZATION_LIM_RANGE,
                                   ColorRange::limited, ColorMatrix::bt601}};
    for (const auto& each : cases) {
        const auto device = plugIn("/dev/video0");
        change([&] {
            device->formats = {V4L2_PIX_FMT_YUYV};
            device->colorspace = each.colorspace;
            device->encoding = each.encoding;
            device->quantization = each.quantization;
        });
        const auto before = sink.frames.size();
        const auto feed = cameras->open("v4l2:usb-1", sink);
        deliver(*device, frame);
        ASSERT_TRUE(sink.waitUntil([&] { return sink.frames.size() > before; }));
        EXPECT_EQ(sink.frames.back().format.range, each.range);
        EXPECT_EQ(sink.frames.back().format.matrix, each.matrix);
    }
}

TEST_F(V4l2CamerasTest, BuffersGoRoundForMoreFramesThanThereAre) {
    const auto device = plugIn("/dev/video0");
    const auto feed = cameras->open("v4l2:usb-1", sink);
    for (std::size_t turn = 0; turn < 20; ++turn) {
        deliver(*device, {static_cast<std::byte>(turn)});
        ASSERT_TRUE(sink.waitUntil([&] { return sink.frames.size() == turn + 1; }));
        EXPECT_EQ(sink.frames.back().data, std::vector{static_cast<std::byte>(turn)});
    }
}

TEST_F(V4l2CamerasTest, FramesThatCameWhileTheSinkWasBusyAreDroppedButTheNewest) {
    const auto device = plugIn("/dev/video0");
    const auto byte = [](int number) { return std::vector{static_cast<std::byte>(number)}; };
    // Before the feed sees any of them, and again while it hands the first one on.
    const auto bringThree = [&](int first) {
        change([&] {
            for (int value = first; value < first + 3; ++value) {
                device->frames.push_back(byte(value));
            }
        });
    };
    bringThree(1);
    sink.onFrameTaken = [&, isFirst = true]() mutable {
        if (std::exchange(isFirst, false)) {
            bringThree(4);
        }
    };
    auto feed = cameras->open("v4l2:usb-1", sink);
    ASSERT_TRUE(sink.waitUntil([&] { return sink.frames.size() == 2; }));
    deliver(*device, byte(7));
    ASSERT_TRUE(sink.waitUntil([&] { return sink.frames.size() == 3; }));
    feed.reset();
    std::vector<std::vector<std::byte>> taken;
    for (const auto& each : sink.frames) {
        taken.push_back(each.data);
    }
    EXPECT_THAT(taken, ElementsAre(byte(3), byte(6), byte(7)));
    EXPECT_EQ(device->queued.size(), device->buffers.size()) << "every buffer is with the driver again";
}

TEST_F(V4l2CamerasTest, ABrokenFrameDoesNotTakeTheNewestOnesPlace) {
    const auto device = plugIn("/dev/video0");
    change([&] {
        device->frames.push_back(frame);
        device->frames.emplace_back();
    });
    const auto feed = cameras->open("v4l2:usb-1", sink);
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    EXPECT_EQ(sink.frames.front().data, frame);
}

TEST_F(V4l2CamerasTest, FramesThatTheDriverCallsBrokenAreDropped) {
    const auto device = plugIn("/dev/video0");
    change([&] { device->marksFramesAsBroken = true; });
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(waitFor([&] { return device->isStreaming && device->frames.empty(); }));
    change([&] { device->marksFramesAsBroken = false; });
    deliver(*device, {std::byte{9}});
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    EXPECT_EQ(sink.frames.front().data, std::vector{std::byte{9}});
}

TEST_F(V4l2CamerasTest, EndingTheFeedLetsTheCameraGo) {
    const auto device = plugIn("/dev/video0");
    auto feed = cameras->open("v4l2:usb-1", sink);
    ASSERT_TRUE(waitFor([&] { return device->isStreaming; }));
    feed.reset();
    EXPECT_FALSE(device->isStreaming);
    EXPECT_EQ(devices->opened, 0);
    EXPECT_EQ(devices->mapped, 0);
}

TEST_F(V4l2CamerasTest, UnpluggingDarkensAndPluggingInAgainUnderAnotherNumberResumes) {
    auto device = plugIn("/dev/video0");
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    change([&] {
        device->failure = ENODEV;
        devices->byPath.clear();
    });
    ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    EXPECT_TRUE(waitFor([&] { return devices->opened == 0 && devices->mapped == 0; }));
    device = plugIn("/dev/video5");
    deliver(*device, {std::byte{7}});
    ASSERT_TRUE(sink.waitUntil([&] { return sink.frames.size() == 2; }));
    EXPECT_EQ(sink.frames.back().data, std::vector{std::byte{7}});
}

TEST_F(V4l2CamerasTest, CameraThatAnotherProgramUsesIsTriedAgain) {
    const auto device = plugIn("/dev/video0");
    change([&] { device->isBusy = true; });
    const auto feed = cameras->open("v4l2:usb-1", sink);
    ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    EXPECT_EQ(sink.reasons.front(), CaptureInterruption::deviceInUse);
    change([&] { device->isBusy = false; });
    deliver(*device, frame);
    EXPECT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
}

TEST_F(V4l2CamerasTest, ACameraWithoutColorsComesLast) {
    plugIn("/dev/video0", "A Camera", "usb-1")->formats = {V4L2_PIX_FMT_GREY};
    plugIn("/dev/video2", "B Camera", "usb-2");
    EXPECT_THAT(cameras->devices(), ElementsAre(CaptureDevice{"v4l2:usb-2", "B Camera"},
                                                CaptureDevice{"v4l2:usb-1", "A Camera"}));
}

TEST_F(V4l2CamerasTest, ACameraThatFallsSilentIsDarkAndIsOpenedAgain) {
    const auto device = plugIn("/dev/video0");
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    EXPECT_EQ(sink.reasons.front(), CaptureInterruption::noPictures);
    deliver(*device, frame);
    EXPECT_TRUE(sink.waitUntil([&] { return sink.frames.size() == 2; }));
}

TEST_F(V4l2CamerasTest, FramesOfWhichNothingCanBeShownAreAsGoodAsSilence) {
    const auto device = plugIn("/dev/video0");
    sink.canBeShown = false;
    // There is always another one.
    sink.onFrameTaken = [&] { deliver(*device, frame); };
    auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    EXPECT_EQ(sink.reasons.front(), CaptureInterruption::noPictures);
    EXPECT_GT(sink.frames.size(), 1U);
    feed.reset();
}

TEST_F(V4l2CamerasTest, WhoeverAsksForTheListDoesNotWaitForADriver) {
    plugIn("/dev/video0");
    ASSERT_EQ(cameras->devices().size(), 1U);
    devices->holdUpOpening(true);
    plugIn("/dev/video2", "Slow Camera", "usb-2");
    ASSERT_TRUE(waitFor([&] { return devices->waitingToOpen > 0; }));
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_THAT(cameras->devices(), ElementsAre(CaptureDevice{"v4l2:usb-1", "Camera"}));
    }
    EXPECT_GT(devices->waitingToOpen, 0) << "the driver has not answered meanwhile";
    devices->holdUpOpening(false);
    EXPECT_TRUE(eventually([&] { return cameras->devices().size() == 2; }));
}

TEST_F(V4l2CamerasTest, TheEndDoesNotWaitForADriverThatNeverAnswers) {
    devices->holdUpOpening(true);
    plugIn("/dev/video0");
    EXPECT_THAT(cameras->devices(), IsEmpty());
    cameras.reset();
    EXPECT_EQ(devices->waitingToOpen, 1) << "it still waits";
    devices->holdUpOpening(false);
}

TEST_F(V4l2CamerasTest, CamerasThatComeAndGoAreTold) {
    std::atomic<int> news = 0;
    cameras->onDevicesChanged([&] { ++news; });
    EXPECT_THAT(cameras->devices(), IsEmpty());
    const int before = news;
    plugIn("/dev/video0");
    ASSERT_TRUE(eventually([&] { return news > before; }));
    EXPECT_EQ(cameras->devices().size(), 1U);
    change([&] { devices->byPath.clear(); });
    ASSERT_TRUE(eventually([&] { return news > before + 1; }));
    EXPECT_THAT(cameras->devices(), IsEmpty());
    cameras.reset();
}

TEST_F(V4l2CamerasTest, CameraOfImpossibleSizeIsNotStarted) {
    for (const std::uint32_t size : {0U, 16384U}) {
        const auto device = plugIn("/dev/video0");
        device->forcedWidth = size == 0 ? 1 : size;
        device->forcedHeight = size;
        const auto before = sink.darks;
        const auto feed = cameras->open("v4l2:usb-1", sink);
        ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > before; }));
        change([&] { EXPECT_FALSE(device->isStreaming); });
    }
}

TEST_F(V4l2CamerasTest, AListOfFormatsWithoutAnEndIsLookedThrough) {
    plugIn("/dev/video0", "Camera", "usb-1")->hasEndlessFormats = true;
    const auto unreadable = plugIn("/dev/video1", "Depth", "usb-2");
    unreadable->formats = {V4L2_PIX_FMT_Z16};
    unreadable->hasEndlessFormats = true;
    EXPECT_THAT(cameras->devices(), ElementsAre(CaptureDevice{"v4l2:usb-1", "Camera"}));
}

TEST_F(V4l2CamerasTest, ABufferThatTheDriverInventsIsNotRead) {
    const auto device = plugIn("/dev/video0");
    device->inventedBuffer = 1000;
    const auto feed = cameras->open("v4l2:usb-1", sink);
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    change([&] { device->inventedBuffer.reset(); });
    deliver(*device, frame);
    ASSERT_TRUE(sink.waitUntil([&] { return !sink.frames.empty(); }));
    EXPECT_EQ(sink.frames.size(), 1U);
}

TEST_F(V4l2CamerasTest, CameraThatIsNotThereIsDarkAndCostsNothingToEnd) {
    auto feed = cameras->open("v4l2:none", sink);
    EXPECT_TRUE(sink.waitUntil([&] { return sink.darks > 0; }));
    feed.reset();
    EXPECT_THAT(sink.frames, IsEmpty());
}

} // namespace
