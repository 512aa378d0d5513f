#include "platform/linux/camera/CameraSession.h"

#include "platform/linux/system/ThreadWorkQueues.h"
#include "tests/platform/camera/CameraWorld.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <chrono>
#include <mutex>
#include <thread>

namespace {

using LinuxPlatform::CameraInput;
using LinuxPlatform::CameraPhotoOutput;
using LinuxPlatform::CameraSession;
using LinuxPlatform::FrameSink;
using LinuxPlatform::PixelLayout;
using LinuxPlatform::VideoPlane;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::RecordingPhotoReceiver;

/// Cameras whose frames the test delivers.
struct ScriptedStack : LinuxPlatform::CameraStack {
    struct Feed : LinuxPlatform::CameraFeed {
        Feed(ScriptedStack& theStack, std::string theID) : stack(theStack), id(std::move(theID)) {
            stack.add("open " + id);
        }
        Feed(const Feed&) = delete;
        Feed& operator=(const Feed&) = delete;
        ~Feed() override {
            const std::scoped_lock lock(stack.closing);
            stack.add("close " + id);
            stack.sink = nullptr;
        }
        ScriptedStack& stack;
        std::string id;
    };

    std::vector<std::string> calls;
    std::mutex callsMutex;
    /// Held up by whoever wants closing to take its time.
    std::mutex closing;
    FrameSink* sink = nullptr;

    void add(const std::string& call) {
        const std::scoped_lock lock(callsMutex);
        calls.push_back(call);
    }
    bool is(const std::vector<std::string>& expected) {
        const std::scoped_lock lock(callsMutex);
        return calls == expected;
    }

    std::vector<Platform::CaptureDevice> devices() override { return {}; }
    std::optional<Platform::CaptureDevice> defaultDevice() override { return std::nullopt; }
    void onDevicesChanged(std::function<void()>) override {}
    std::unique_ptr<LinuxPlatform::CameraFeed> open(const std::string& uniqueID,
                                                    FrameSink& theSink) override {
        sink = &theSink;
        return std::make_unique<Feed>(*this, uniqueID);
    }

    /// A gray frame, from a thread of its own.
    void deliver(int shade) {
        std::thread([&] {
            const std::vector<std::byte> data(64, static_cast<std::byte>(shade));
            sink->onFrame({{PixelLayout::gray, 8, 8}, {VideoPlane{data}}});
        }).join();
    }
};

/// Runs every task at once.
struct ImmediateQueue : Platform::WorkQueue {
    void async(Task task) override { task(); }
};

struct CameraSessionTest : testing::Test {
    TestSupport::HandDrivenQueue mainQueue;
    std::shared_ptr<ScriptedStack> stack = std::make_shared<ScriptedStack>();
    std::shared_ptr<CameraSession> session =
        std::make_shared<CameraSession>(mainQueue, std::make_unique<ImmediateQueue>());
    std::shared_ptr<CameraPhotoOutput> output = std::make_shared<CameraPhotoOutput>();
    std::shared_ptr<RecordingPhotoReceiver> receiver = std::make_shared<RecordingPhotoReceiver>();
    int changes = 0;

    std::shared_ptr<CameraInput> input(const std::string& id) {
        return std::make_shared<CameraInput>(Platform::CaptureDevice{id, id}, stack);
    }

    std::unique_ptr<Platform::VideoPreview> look() {
        auto preview = session->makePreview([this] { ++changes; });
        preview->setSize(8, 8);
        return preview;
    }

    static int shade(const Platform::VideoPreview& preview) {
        return preview.picture() ? static_cast<int>(preview.picture()->pixels.front()) : -1;
    }
};

TEST_F(CameraSessionTest, OneCameraAndOneOutputFitIn) {
    const auto first = input("one");
    EXPECT_TRUE(session->canAddInput(first));
    session->addInput(first);
    EXPECT_THAT(session->inputs(), ElementsAre(first));
    EXPECT_FALSE(session->canAddInput(input("two")));
    session->addInput(input("two"));
    EXPECT_THAT(session->inputs(), ElementsAre(first));
    session->removeInput(input("two"));
    EXPECT_THAT(session->inputs(), ElementsAre(first));
    session->removeInput(first);
    EXPECT_THAT(session->inputs(), IsEmpty());
    EXPECT_FALSE(session->canAddInput(nullptr));

    EXPECT_TRUE(session->canAddOutput(output));
    session->addOutput(output);
    EXPECT_THAT(session->outputs(), ElementsAre(output));
    EXPECT_FALSE(session->canAddOutput(std::make_shared<CameraPhotoOutput>()));
}

TEST_F(CameraSessionTest, CameraIsLetGoWhileTheComputerSleeps) {
    session->addInput(input("one"));
    session->startRunning();
    const auto preview = look();
    stack->deliver(100);
    mainQueue.runReady();
    ASSERT_EQ(shade(*preview), 100);
    session->setSuspended(true);
    session->setSuspended(true);
    mainQueue.runReady();
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one"));
    EXPECT_TRUE(session->isRunning());
    EXPECT_EQ(shade(*preview), -1);

    session->setSuspended(false);
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one", "open one"));
    stack->deliver(50);
    mainQueue.runReady();
    EXPECT_EQ(shade(*preview), 50);
}

TEST_F(CameraSessionTest, ASessionThatBeginsDuringSleepOpensTheCameraAfterwards) {
    session->addInput(input("one"));
    session->setSuspended(true);
    session->startRunning();
    EXPECT_THAT(stack->calls, IsEmpty());
    session->setSuspended(false);
    EXPECT_THAT(stack->calls, ElementsAre("open one"));
}

TEST_F(CameraSessionTest, ASessionThatEndsDuringSleepLeavesTheCameraAlone) {
    session->addInput(input("one"));
    session->startRunning();
    session->setSuspended(true);
    session->stopRunning();
    session->setSuspended(false);
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one"));
}

TEST_F(CameraSessionTest, CameraIsOpenOnlyWhileTheSessionRuns) {
    session->addInput(input("one"));
    EXPECT_THAT(stack->calls, IsEmpty());
    session->startRunning();
    session->startRunning();
    EXPECT_TRUE(session->isRunning());
    EXPECT_THAT(stack->calls, ElementsAre("open one"));
    session->stopRunning();
    session->stopRunning();
    EXPECT_FALSE(session->isRunning());
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one"));
}

TEST_F(CameraSessionTest, SessionWithoutACameraRunsAllTheSame) {
    session->startRunning();
    EXPECT_TRUE(session->isRunning());
    session->addInput(input("one"));
    EXPECT_THAT(stack->calls, ElementsAre("open one"));
}

TEST_F(CameraSessionTest, ChangesTakeEffectTogether) {
    const auto first = input("one");
    session->addInput(first);
    session->startRunning();
    session->beginConfiguration();
    session->removeInput(first);
    session->addInput(input("two"));
    EXPECT_THAT(stack->calls, ElementsAre("open one"));
    session->commitConfiguration();
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one", "open two"));
}

TEST_F(CameraSessionTest, SwitchingDoesNotWaitForADriverThatTakesItsTime) {
    LinuxPlatform::ThreadWorkQueues workQueues;
    session = std::make_shared<CameraSession>(mainQueue, workQueues.makeSerial("camera switch"));
    const auto first = input("one");
    session->addInput(first);
    session->startRunning();
    // Closing the first camera waits until this is let go.
    std::unique_lock driver(stack->closing);
    session->beginConfiguration();
    session->removeInput(first);
    session->addInput(input("two"));
    session->commitConfiguration();
    session->setSuspended(true);
    session->setSuspended(false);
    EXPECT_TRUE(stack->is({"open one"})) << "and yet the main thread has come here";
    driver.unlock();
    EXPECT_TRUE(TestSupport::spinUntil(
        [&] {
            return stack->is({"open one", "close one", "open two"});
        },
        std::chrono::seconds(20)));
    session.reset();
}

TEST_F(CameraSessionTest, UnchangedConfigurationLeavesTheCameraOpen) {
    session->addInput(input("one"));
    session->startRunning();
    session->beginConfiguration();
    session->addOutput(output);
    session->commitConfiguration();
    session->commitConfiguration();
    EXPECT_THAT(stack->calls, ElementsAre("open one"));
}

TEST_F(CameraSessionTest, DestroyedSessionClosesItsCamera) {
    session->addInput(input("one"));
    session->startRunning();
    session.reset();
    EXPECT_THAT(stack->calls, ElementsAre("open one", "close one"));
}

TEST_F(CameraSessionTest, PreviewIsToldOnTheMainThreadAndSeesTheNewestPicture) {
    session->addInput(input("one"));
    session->startRunning();
    const auto preview = look();
    stack->deliver(10);
    stack->deliver(20);
    stack->deliver(30);
    EXPECT_EQ(changes, 0);
    mainQueue.runReady();
    EXPECT_EQ(changes, 1) << "one message for all that came since the last";
    EXPECT_EQ(shade(*preview), 30);
    mainQueue.runReady();
    EXPECT_EQ(changes, 1);
}

TEST_F(CameraSessionTest, CameraThatGoesDarkenThePreview) {
    session->addInput(input("one"));
    session->startRunning();
    const auto preview = look();
    stack->deliver(10);
    mainQueue.runReady();
    stack->sink->onDark(Platform::CaptureInterruption::deviceNotAvailable);
    EXPECT_EQ(preview->picture(), nullptr);
    mainQueue.runReady();
    EXPECT_EQ(changes, 2);
    stack->deliver(20);
    mainQueue.runReady();
    EXPECT_EQ(shade(*preview), 20);
}

TEST_F(CameraSessionTest, SwitchingAndStoppingDarkenThePreview) {
    const auto first = input("one");
    session->addInput(first);
    session->startRunning();
    const auto preview = look();
    stack->deliver(10);
    session->beginConfiguration();
    session->removeInput(first);
    session->addInput(input("two"));
    session->commitConfiguration();
    EXPECT_EQ(preview->picture(), nullptr);
    stack->deliver(20);
    EXPECT_EQ(shade(*preview), 20);
    session->stopRunning();
    EXPECT_EQ(preview->picture(), nullptr);
}

TEST_F(CameraSessionTest, PreviewsOfDifferentSizesShareAPictureAndHiddenOnesSeeNone) {
    session->addInput(input("one"));
    session->startRunning();
    const auto large = look();
    const auto small = session->makePreview([] {});
    small->setSize(2, 2);
    const auto hidden = session->makePreview([] {});
    stack->deliver(10);
    EXPECT_EQ(large->picture()->width, 8);
    EXPECT_EQ(small->picture(), large->picture());
    EXPECT_EQ(hidden->picture(), nullptr);
}

TEST_F(CameraSessionTest, PreviewThatReturnsDoesNotSeeAnOldPicture) {
    session->addInput(input("one"));
    session->startRunning();
    const auto preview = look();
    stack->deliver(10);
    preview->setSize(0, 0);
    stack->deliver(20);
    preview->setSize(8, 8);
    EXPECT_EQ(preview->picture(), nullptr);
    stack->deliver(30);
    EXPECT_EQ(shade(*preview), 30);
}

TEST_F(CameraSessionTest, PreviewMayOutliveTheSession) {
    session->addInput(input("one"));
    session->startRunning();
    const auto preview = look();
    stack->deliver(10);
    session.reset();
    EXPECT_EQ(preview->picture(), nullptr);
    preview->setSize(4, 4);
    mainQueue.runReady();
}

TEST_F(CameraSessionTest, PreviewMayEndWhileNewsIsOnItsWay) {
    session->addInput(input("one"));
    session->startRunning();
    auto preview = look();
    stack->deliver(10);
    preview.reset();
    mainQueue.runReady();
    EXPECT_EQ(changes, 0);
}

TEST_F(CameraSessionTest, PhotoIsTheNextFrame) {
    session->addInput(input("one"));
    session->addOutput(output);
    session->startRunning();
    stack->deliver(10);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 0);
    stack->deliver(20);
    stack->deliver(30);
    ASSERT_EQ(receiver->calls(), 1);
    ASSERT_TRUE(receiver->photo()->fileDataRepresentation);
    const auto picture =
        LinuxPlatform::JpegCodec().decode(*receiver->photo()->fileDataRepresentation, 1).picture;
    ASSERT_TRUE(picture);
    EXPECT_TRUE(TestSupport::isNear(TestSupport::pixelOf(*picture, 4, 4), {20, 20, 20}, 2));
    EXPECT_THAT(output->availablePhotoCodecTypes(), ElementsAre(Platform::PhotoCodec::jpeg));
}

TEST_F(CameraSessionTest, PhotoWaitsForAFrameThatIsWorthIt) {
    session->addInput(input("one"));
    session->addOutput(output);
    session->startRunning();
    output->capturePhoto({}, receiver);
    stack->sink->onFrame({{PixelLayout::gray, 8, 8}, {}});
    EXPECT_EQ(receiver->calls(), 0);
    stack->deliver(20);
    EXPECT_EQ(receiver->calls(), 1);
}

TEST_F(CameraSessionTest, CameraThatGoesEndsThePhotosThatWait) {
    session->addInput(input("one"));
    session->addOutput(output);
    session->startRunning();
    output->capturePhoto({}, receiver);
    stack->sink->onDark(Platform::CaptureInterruption::deviceNotAvailable);
    ASSERT_EQ(receiver->calls(), 1);
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 2) << "there is no camera to take it";
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);

    stack->deliver(20);
    EXPECT_EQ(receiver->calls(), 2) << "nobody waits any more";
    output->capturePhoto({}, receiver);
    stack->deliver(30);
    ASSERT_EQ(receiver->calls(), 3);
    EXPECT_TRUE(receiver->photo()->fileDataRepresentation);
}

TEST_F(CameraSessionTest, CameraThatIsStartedAgainMayAnswerWithItsFirstFrame) {
    session->addInput(input("one"));
    session->addOutput(output);
    session->startRunning();
    stack->sink->onDark(Platform::CaptureInterruption::deviceNotAvailable);
    session->stopRunning();
    session->startRunning();
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 0);
    stack->deliver(20);
    ASSERT_EQ(receiver->calls(), 1);
    EXPECT_TRUE(receiver->photo()->fileDataRepresentation);
}

TEST_F(CameraSessionTest, EveryCaptureEndsOnce) {
    const auto first = input("one");
    session->addInput(first);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 1) << "not in a session";
    session->addOutput(output);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 2) << "the session does not run";
    session->startRunning();
    output->capturePhoto({}, receiver);
    session->removeInput(first);
    EXPECT_EQ(receiver->calls(), 3) << "the camera was taken away";
    session->addInput(first);
    output->capturePhoto({}, receiver);
    session.reset();
    EXPECT_EQ(receiver->calls(), 4) << "the session is gone";
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 5);
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
}

TEST_F(CameraSessionTest, ReceiverThatIsGoneIsNotCalled) {
    session->addInput(input("one"));
    session->addOutput(output);
    session->startRunning();
    output->capturePhoto({}, receiver);
    receiver.reset();
    stack->deliver(10);
}

} // namespace
