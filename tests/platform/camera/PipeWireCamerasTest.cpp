#include "platform/linux/camera/V4l2Cameras.h"
#include "tests/platform/camera/FakeVideoDevices.h"
#include "tests/platform/camera/PipeWireCameraCheck.h"
#include "tests/platform/system/UnixSocket.h"
#include "tests/support/RunningTime.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using LinuxPlatform::LinuxCaptureServices;
using LinuxPlatform::PipeWireCameras;
using Platform::CaptureDevice;
using Platform::CaptureInterruption;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::ChildProcess;
using TestSupport::RecordingPhotoReceiver;
using TestSupport::runningTimeOf;
using TestSupport::showsBars;
using TestSupport::spinUntil;
using TestSupport::VirtualCamera;

std::vector<std::byte> bytesOf(std::string_view text) {
    std::vector<std::byte> bytes;
    for (const char letter : text) {
        bytes.push_back(static_cast<std::byte>(letter));
    }
    return bytes;
}

bool contains(const std::vector<std::byte>& data, std::string_view text) {
    const auto wanted = bytesOf(text);
    return std::ranges::search(data, wanted).begin() != data.end();
}

/// Whether it holds for the first question to a stack. On a machine that is too busy to answer in the time
/// that a stack waits, another one is asked.
template <class Condition>
bool holdsForAFreshStack(const Condition& condition) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        PipeWireCameras fresh;
        if (condition(fresh)) {
            return true;
        }
    }
    return false;
}

/// A socket of the virtual desktop's daemon.
int connectToDaemon() {
    return LinuxPlatform::connectToSocket(std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) /
                                          "pipewire-0");
}

using PipeWireCamerasTest = TestSupport::PipeWireCameraCheck;

TEST_F(PipeWireCamerasTest, CamerasAreListedBuiltInFirstThenByName) {
    const auto network = plugIn("b-phone", "A Phone", "yuyv");
    const auto other = plugIn("a-phone", "A Phone", "yuyv");
    const auto builtIn = plugIn("inside", "Integrated Camera", "yuyv");
    EXPECT_THAT(services.devices(),
                ElementsAre(CaptureDevice{"inside", "Integrated Camera"}, CaptureDevice{"b-phone", "A Phone"},
                            CaptureDevice{"a-phone", "A Phone (2)"}));
}

TEST_F(PipeWireCamerasTest, FirstListIsComplete) {
    const auto one = plugIn("one", "One", "yuyv");
    const auto two = plugIn("two", "Two", "yuyv");
    EXPECT_TRUE(holdsForAFreshStack(
        [](PipeWireCameras& fresh) { return fresh.devices().size() == 2 && fresh.isReachable(); }));
}

TEST_F(PipeWireCamerasTest, TheConnectionAsksNobodyForPriority) {
    const auto one = plugIn("one", "One", "yuyv");
    // PipeWire's module for that, which its configuration names since 1.4, waits for the bus.
    const auto mapped = TestSupport::readFile("/proc/self/maps");
    EXPECT_THAT(mapped, testing::HasSubstr("libpipewire-module-client-node"));
    EXPECT_THAT(mapped, testing::Not(testing::HasSubstr("libpipewire-module-rt")));
}

TEST_F(PipeWireCamerasTest, DefaultCameraIsTheSessionManagersChoice) {
    const auto one = plugIn("one", "One", "yuyv");
    const auto two = plugIn("two", "Two", "yuyv");
    ChildProcess choice(
        {"pw-metadata", "0", "default.configured.video.source", R"({"name":"two"})", "Spa:String:JSON"});
    EXPECT_TRUE(spinUntil([&] { return services.defaultDevice() == CaptureDevice{"two", "Two"}; }, patience));
    ChildProcess other(
        {"pw-metadata", "0", "default.configured.video.source", R"({"name":"one"})", "Spa:String:JSON"});
    EXPECT_TRUE(spinUntil([&] { return services.defaultDevice() == CaptureDevice{"one", "One"}; }, patience));
    EXPECT_TRUE(holdsForAFreshStack([](PipeWireCameras& fresh) {
        return fresh.defaultDevice() == CaptureDevice{"one", "One"};
    }));
}

TEST_F(PipeWireCamerasTest, CamerasComeAndGo) {
    auto one = plugIn("one", "One", "yuyv");
    const auto two = plugIn("two", "Two", "yuyv");
    one->unplug();
    EXPECT_TRUE(spinUntil(
        [&] {
            return services.devices() == std::vector{CaptureDevice{"two", "Two"}};
        },
        patience));
    one = plugIn("one", "One", "yuyv");
    EXPECT_THAT(services.devices(), ElementsAre(CaptureDevice{"one", "One"}, CaptureDevice{"two", "Two"}));
}

TEST_F(PipeWireCamerasTest, CamerasOfTheSameNameAreToldApart) {
    const auto one = plugIn("same", "Same Camera", "yuyv");
    const auto two = plugIn("same", "Same Camera", "jpeg", {"log=" + (folder.path() / "second").string()});
    ASSERT_THAT(services.devices(), ElementsAre(CaptureDevice{"same", "Same Camera"},
                                                CaptureDevice{"same#2", "Same Camera (2)"}));
    choose("same#2");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_THAT(TestSupport::readFile(folder.path() / "second"), testing::HasSubstr("streaming"));
    EXPECT_FALSE(one->isStreaming());
}

TEST_F(PipeWireCamerasTest, RawPicturesHaveTheCamerasColors) {
    const auto camera = plugIn("raw", "Raw Camera", "yuyv");
    choose("raw");
    look();
    session->startRunning();
    EXPECT_TRUE(session->isRunning());
    ASSERT_TRUE(comesOn());
    const auto picture = preview->picture();
    EXPECT_TRUE(showsBars(*picture));
    // A quarter of 1280 by 720 is enough for the view.
    EXPECT_EQ(picture->width, 320);
    EXPECT_EQ(picture->height, 180);
    EXPECT_TRUE(spinUntil([&] { return pictures >= 5; }, patience)) << "pictures keep coming";
}

TEST_F(PipeWireCamerasTest, ColorsAreReadAsTheCameraMeansThem) {
    const auto camera = plugIn("full", "Full Range", "yuyv", {"full709"});
    choose("full");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    const auto picture = preview->picture();
    const std::array<TestSupport::Rgb, 4> bars{{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {128, 128, 128}}};
    for (int bar = 0; bar < 4; ++bar) {
        const auto pixel =
            TestSupport::pixelOf(*picture, picture->width * (2 * bar + 1) / 8, picture->height / 8);
        EXPECT_TRUE(TestSupport::isNear(pixel, bars[static_cast<std::size_t>(bar)], 2))
            << bar << ": " << pixel.red << " " << pixel.green << " " << pixel.blue;
    }
}

TEST_F(PipeWireCamerasTest, PicturesThatTheCameraTurnsAreTurnedBack) {
    // Mirrored, which four upright bars show, and on their side.
    const auto mirrored = plugIn("mirrored", "Mirrored", "yuyv", {"transform=4"});
    const auto turned = plugIn("turned", "Turned", "both", {"transform=1"});
    const TestSupport::Rgb red{255, 0, 0};
    choose("mirrored");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    auto picture = preview->picture();
    EXPECT_TRUE(TestSupport::isNear(TestSupport::pixelOf(*picture, picture->width * 7 / 8, 10), red));
    choose("turned");
    ASSERT_TRUE(spinUntil(
        [&] { return preview->picture() && preview->picture()->height > preview->picture()->width; },
        patience));
    picture = preview->picture();
    // What was turned counter-clockwise had its right side on top before: the left bar comes to the top.
    EXPECT_TRUE(
        TestSupport::isNear(TestSupport::pixelOf(*picture, picture->width / 8, picture->height / 8), red));
}

TEST_F(PipeWireCamerasTest, JpegIsPreferredAndDecodedAsSmallAsItMayBe) {
    const auto camera = plugIn("both", "Camera", "both");
    choose("both");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_THAT(camera->log(), testing::HasSubstr("jpeg 1280x720"));
    EXPECT_TRUE(showsBars(*preview->picture()));
    EXPECT_EQ(preview->picture()->width, 320);
    preview->setSize(1280, 720);
    EXPECT_TRUE(spinUntil([&] { return preview->picture() && preview->picture()->width == 1280; }, patience));
}

TEST_F(PipeWireCamerasTest, PhotoIsTheCamerasOwnJpeg) {
    const auto camera = plugIn("jpeg", "Camera", "both");
    choose("jpeg");
    look();
    session->startRunning();
    // A busy machine may be late with the first picture, and a photo is not waited for that long.
    ASSERT_TRUE(comesOn());
    preview.reset();
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({Platform::PhotoCodec::jpeg}, receiver);
    ASSERT_TRUE(spinUntil([&] { return receiver->photo().has_value(); }, patience));
    const auto data = receiver->photo()->fileDataRepresentation;
    ASSERT_TRUE(data);
    EXPECT_TRUE(contains(*data, "VirtualCamera jpeg frame "));
    const auto picture = services.decodeImage(*data);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 1280);
    EXPECT_TRUE(showsBars(*picture));
    EXPECT_EQ(receiver->calls(), 1);
}

TEST_F(PipeWireCamerasTest, PhotoOfARawCameraIsEncodedAtFullSize) {
    const auto camera = plugIn("raw", "Camera", "yuyv");
    choose("raw");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({Platform::PhotoCodec::jpeg}, receiver);
    ASSERT_TRUE(spinUntil([&] { return receiver->photo().has_value(); }, patience));
    const auto data = receiver->photo()->fileDataRepresentation;
    ASSERT_TRUE(data);
    EXPECT_FALSE(contains(*data, "VirtualCamera"));
    const auto picture = services.decodeImage(*data);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 1280);
    EXPECT_EQ(picture->height, 720);
    EXPECT_TRUE(showsBars(*picture));
}

TEST_F(PipeWireCamerasTest, StoppingLetsTheCameraGoAndDarkensThePreview) {
    const auto camera = plugIn("cam", "Camera", "both");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    const auto stop = [&] {
        session->stopRunning();
        EXPECT_FALSE(session->isRunning());
        EXPECT_EQ(preview->picture(), nullptr);
        EXPECT_TRUE(spinUntil([&] { return !camera->isStreaming(); }, patience));
    };
    // Measured: 5 to 18 ms. The rest of the bound is for a busy machine.
    EXPECT_LT(runningTimeOf(stop), std::chrono::seconds(2));
    session->startRunning();
    EXPECT_TRUE(comesOn());
}

TEST_F(PipeWireCamerasTest, PhotoThatWaitsWhenTheSessionStopsEndsWithout) {
    const auto camera = plugIn("mute", "Camera", "yuyv", {"silent"});
    choose("mute");
    session->startRunning();
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({}, receiver);
    session->stopRunning();
    ASSERT_TRUE(receiver->photo());
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 2);
}

TEST_F(PipeWireCamerasTest, PhotoOfACameraThatIsUnpluggedEndsWithout) {
    auto camera = plugIn("mute", "Camera", "yuyv", {"silent"});
    choose("mute");
    look();
    session->startRunning();
    ASSERT_TRUE(spinUntil([&] { return camera->isStreaming(); }, patience));
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({}, receiver);
    // One that has delivered nothing for too long is not waited for.
    EXPECT_TRUE(receiver->calls() == 0 || session->interruption());
    camera->unplug();
    ASSERT_TRUE(isGone("mute"));
    ASSERT_TRUE(spinUntil([&] { return receiver->calls() == 1; }, patience));
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 2) << "the camera is not there";

    camera = plugIn("mute", "Camera", "yuyv");
    ASSERT_TRUE(comesOn());
    EXPECT_EQ(receiver->calls(), 2);
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
    output->capturePhoto({}, receiver);
    ASSERT_TRUE(spinUntil([&] { return receiver->calls() == 3; }, patience));
    EXPECT_TRUE(receiver->photo()->fileDataRepresentation);
}

TEST_F(PipeWireCamerasTest, SwitchingShowsTheOtherCamera) {
    const auto one = plugIn("one", "One", "jpeg");
    const auto two = plugIn("two", "Two", "yuyv", {"size=640x480"});
    choose("one");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    choose("two");
    EXPECT_TRUE(spinUntil([&] { return preview->picture() && preview->picture()->height == 240; }, patience));
    EXPECT_TRUE(spinUntil([&] { return !one->isStreaming() && two->isStreaming(); }, patience));
}

TEST_F(PipeWireCamerasTest, UnpluggingDarkensAndPluggingInAgainResumes) {
    auto camera = plugIn("cam", "Camera", "both");
    const auto other = plugIn("other", "Other", "yuyv");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    camera->unplug();
    EXPECT_TRUE(goesDark());
    EXPECT_TRUE(session->isRunning());
    ASSERT_TRUE(isGone("cam"));
    EXPECT_FALSE(other->isStreaming()) << "the other camera is not taken in its place";
    camera = plugIn("cam", "Camera", "both");
    EXPECT_TRUE(comesOn());
}

TEST_F(PipeWireCamerasTest, CameraThatNeverDeliversStaysDarkAndDoesNotBlock) {
    const auto camera = plugIn("mute", "Camera", "both", {"silent"});
    choose("mute");
    look();
    session->startRunning();
    EXPECT_TRUE(spinUntil([&] { return camera->isStreaming(); }, patience));
    EXPECT_EQ(preview->picture(), nullptr);
    session->stopRunning();
    EXPECT_TRUE(spinUntil([&] { return !camera->isStreaming(); }, patience));
}

TEST_F(PipeWireCamerasTest, PreviewThatShowsNothingCostsNoPicture) {
    const auto camera = plugIn("cam", "Camera", "both");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    preview->setSize(0, 0);
    EXPECT_EQ(preview->picture(), nullptr);
    preview->setSize(100, 50);
    EXPECT_TRUE(comesOn());
    preview.reset();
    look();
    EXPECT_EQ(preview->picture(), nullptr) << "an old picture";
    EXPECT_TRUE(comesOn());
}

TEST_F(PipeWireCamerasTest, DamagedFramesAreShownAsFarAsTheyGo) {
    const auto camera = plugIn("cut", "Camera", "jpeg", {"truncated"});
    choose("cut");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_TRUE(showsBars(*preview->picture()));
}

TEST_F(PipeWireCamerasTest, FramesThatAreNoneStayDark) {
    const auto noise = plugIn("noise", "Noise", "jpeg", {"broken"});
    const auto half = plugIn("half", "Half", "yuyv", {"truncated"});
    for (const auto& choice : {std::pair{"noise", noise.get()}, std::pair{"half", half.get()}}) {
        const auto* const id = choice.first;
        auto* const camera = choice.second;
        choose(id);
        look();
        session->startRunning();
        ASSERT_TRUE(spinUntil([&] { return camera->isStreaming(); }, patience));
        waitForAWitness();
        EXPECT_EQ(preview->picture(), nullptr) << id;
        session->stopRunning();
    }
}

TEST_F(PipeWireCamerasTest, JpegOfAnotherSizeThanAnnouncedIsShownAsItIs) {
    for (const auto* fault : {"smaller", "larger"}) {
        const auto camera = plugIn(fault, "Camera", "jpeg", {fault});
        choose(fault);
        look();
        session->startRunning();
        ASSERT_TRUE(comesOn()) << fault;
        EXPECT_TRUE(showsBars(*preview->picture())) << fault;
        session->stopRunning();
    }
}

TEST_F(PipeWireCamerasTest, RawFramesOfAnotherSizeThanAnnouncedAreShownOnlyIfTheyAreLargeEnough) {
    const auto large = plugIn("large", "Camera", "yuyv", {"larger", "size=320x240"});
    const auto small = plugIn("small", "Camera", "yuyv", {"smaller", "size=320x240"});
    choose("large");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_EQ(preview->picture()->height, 240);
    choose("small");
    ASSERT_TRUE(spinUntil([&] { return small->isStreaming(); }, patience));
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({}, receiver);
    waitForAWitness();
    EXPECT_EQ(preview->picture(), nullptr);
    session->stopRunning();
    ASSERT_TRUE(receiver->photo());
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
}

TEST_F(PipeWireCamerasTest, FormatThatChangesInMidStreamIsFollowed) {
    for (const auto* layout : {"jpeg", "yuyv"}) {
        const auto camera = plugIn(layout, "Camera", layout, {"changing"});
        choose(layout);
        look(640, 360);
        session->startRunning();
        ASSERT_TRUE(
            spinUntil([&] { return preview->picture() && preview->picture()->height == 360; }, patience))
            << layout;
        camera->signal(SIGUSR1);
        ASSERT_TRUE(
            spinUntil([&] { return preview->picture() && preview->picture()->height == 480; }, patience))
            << layout;
        EXPECT_TRUE(showsBars(*preview->picture())) << layout;
        EXPECT_THAT(camera->log(), testing::HasSubstr(std::string(layout) + " 640x480"));
        session->stopRunning();
    }
}

TEST_F(PipeWireCamerasTest, OnlyCamerasThatCanBeReadAreListedAndThoseWithoutColorsLast) {
    const auto gray = plugIn("a-gray", "A Gray One", "gray");
    std::vector<std::unique_ptr<VirtualCamera>> others;
    for (const auto& [formats, size] :
         {std::pair{"depth", "size=640x480"}, std::pair{"bayer", "size=640x480"},
          std::pair{"h264", "size=640x480"}, std::pair{"yuyv", "size=0x0"},
          std::pair{"both", "size=16384x16384"}}) {
        others.push_back(std::make_unique<VirtualCamera>(folder, std::string("other-") + formats, "Other",
                                                         formats, std::vector<std::string>{size}));
    }
    // By the time the last one is there, the others are as well.
    const auto color = plugIn("z-color", "Z Color", "yuyv");
    EXPECT_THAT(services.devices(),
                ElementsAre(CaptureDevice{"z-color", "Z Color"}, CaptureDevice{"a-gray", "A Gray One"}));
    EXPECT_TRUE(holdsForAFreshStack([](PipeWireCameras& fresh) {
        return fresh.devices() ==
               std::vector{CaptureDevice{"z-color", "Z Color"}, CaptureDevice{"a-gray", "A Gray One"}};
    }));
    ChildProcess choice(
        {"pw-metadata", "0", "default.configured.video.source", R"({"name":"z-color"})", "Spa:String:JSON"});
    ASSERT_TRUE(spinUntil([&] { return services.defaultDevice().has_value(); }, patience));
    ChildProcess other(
        {"pw-metadata", "0", "default.configured.video.source", R"({"name":"a-gray"})", "Spa:String:JSON"});
    EXPECT_TRUE(spinUntil([&] { return !services.defaultDevice(); }, patience))
        << "nobody wants it by default";
}

TEST_F(PipeWireCamerasTest, ACameraThatStopsInMidStreamIsDarkSaysSoAndIsOpenedAgain) {
    for (const auto* fault : {"stops", "damages", "breaks"}) {
        const auto camera = plugIn(fault, "Camera", "jpeg", {fault});
        choose(fault);
        look();
        session->startRunning();
        ASSERT_TRUE(comesOn()) << fault;
        EXPECT_TRUE(spinUntil([&] { return !session->interruption(); }, patience)) << fault;
        EXPECT_TRUE(goesDark()) << fault;
        EXPECT_EQ(session->interruption(), CaptureInterruption::noPictures) << fault;
        EXPECT_TRUE(comesOn()) << fault;
        EXPECT_TRUE(spinUntil([&] { return !session->interruption(); }, patience)) << fault;
        session->stopRunning();
    }
}

TEST_F(PipeWireCamerasTest, ACameraThatFreezesIsDarkAndReturns) {
    const auto camera = plugIn("cam", "Camera", "both");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    camera->signal(SIGSTOP);
    EXPECT_TRUE(goesDark());
    EXPECT_EQ(session->interruption(), CaptureInterruption::noPictures);
    camera->signal(SIGCONT);
    EXPECT_TRUE(comesOn());
}

TEST_F(PipeWireCamerasTest, ACameraThatNeverDeliversSaysSo) {
    const auto camera = plugIn("mute", "Camera", "both", {"silent"});
    choose("mute");
    look();
    session->startRunning();
    EXPECT_TRUE(
        spinUntil([&] { return session->interruption() == CaptureInterruption::noPictures; }, patience));
    session->stopRunning();
    EXPECT_EQ(session->interruption(), std::nullopt);
}

TEST_F(PipeWireCamerasTest, ACameraThatRefusesSaysSoTakesNoPhotoLaterAndComesWhenItDoesNot) {
    const auto busy = folder.path() / "busy";
    TestSupport::writeFile(busy, "");
    const auto camera = plugIn("cam", "Camera", "both", {"busy=" + busy.string()});
    choose("cam");
    look();
    session->startRunning();
    const auto receiver = std::make_shared<RecordingPhotoReceiver>();
    output->capturePhoto({}, receiver);
    ASSERT_TRUE(
        spinUntil([&] { return session->interruption() == CaptureInterruption::deviceFailed; }, patience));
    ASSERT_EQ(receiver->calls(), 1);
    output->capturePhoto({}, receiver);
    EXPECT_EQ(receiver->calls(), 2);
    std::filesystem::remove(busy);
    EXPECT_TRUE(comesOn());
    EXPECT_TRUE(spinUntil([&] { return !session->interruption(); }, patience));
    EXPECT_EQ(receiver->calls(), 2) << "nobody asked for one now";
    EXPECT_EQ(receiver->photo()->fileDataRepresentation, std::nullopt);
}

TEST_F(PipeWireCamerasTest, AProducerThatCutsItsMemoryOffEndsNothingButItsFeed) {
    const auto camera = plugIn("cut", "Camera", "yuyv", {"shrinking", "size=640x480"});
    choose("cut");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_TRUE(showsBars(*preview->picture()));
    ASSERT_TRUE(spinUntil([&] { return camera->log().find("cut off") != std::string::npos; }, patience));
    EXPECT_TRUE(goesDark());
    EXPECT_TRUE(comesOn()) << "with new memory";
}

TEST_F(PipeWireCamerasTest, AnErrorOfTheConnectionIsTheEndOfItAndANewOneBegins) {
    const auto camera = plugIn("cam", "Camera", "both");
    std::array<int, 2> sockets{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()), 0);
    // The first daemon that is met talks nonsense, the second is the real one.
    std::atomic<int> connections = 0;
    PipeWireCameras cameras([&] { return ++connections == 1 ? sockets[0] : connectToDaemon(); });
    cameras.prepare();
    const std::vector<char> nonsense(4096, '\xFF');
    ASSERT_EQ(write(sockets[1], nonsense.data(), nonsense.size()), static_cast<ssize_t>(nonsense.size()));
    EXPECT_TRUE(spinUntil(
        [&] {
            return cameras.devices() == std::vector{CaptureDevice{"cam", "Camera"}};
        },
        patience));
    EXPECT_EQ(connections, 2);
    close(sockets[1]);
}

TEST_F(PipeWireCamerasTest, FeedsThatCloseWhileTheConnectionBreaks) {
    const auto camera = plugIn("cam", "Camera", "both");
    std::atomic<int> socket = -1;
    LinuxCaptureServices breakable(
        mainQueue, workQueues, std::make_unique<PipeWireCameras>([&] { return socket = connectToDaemon(); }),
        nullptr);
    ASSERT_TRUE(spinUntil([&] { return breakable.devices().size() == 1; }, patience));
    const auto broken = breakable.makeSession();
    broken->addInput(breakable.makeInput({"cam", "Camera"}));
    const auto shown = broken->makePreview([] {});
    shown->setSize(16, 9);
    for (int turn = 0; turn < 20; ++turn) {
        broken->startRunning();
        ASSERT_TRUE(spinUntil([&] { return shown->picture() != nullptr; }, patience)) << turn;
        const std::jthread breaking([&] { shutdown(socket, SHUT_RDWR); });
        broken->stopRunning();
    }
}

TEST_F(PipeWireCamerasTest, ManyStartsAndStopsLeaveNothingBehind) {
    const auto camera = plugIn("cam", "Camera", "both");
    choose("cam");
    look();
    const auto openFiles = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    };
    session->startRunning();
    ASSERT_TRUE(comesOn());
    session->stopRunning();
    const auto before = openFiles();
    for (int turn = 0; turn < 20; ++turn) {
        session->startRunning();
        ASSERT_TRUE(comesOn());
        session->stopRunning();
    }
    EXPECT_TRUE(spinUntil([&] { return openFiles() <= before; }, patience));
}

/// Whether the process is gone, or its parent has only to hear of it.
bool hasEnded(pid_t process) {
    const auto text =
        TestSupport::readFile(std::filesystem::path("/proc") / std::to_string(process) / "stat");
    const auto name = text.rfind(')');
    return name == std::string::npos || text.substr(name, 3) == ") Z";
}

/// Runs last: afterwards, the virtual desktop's own daemon is gone.
TEST_F(PipeWireCamerasTest, ZDaemonThatEndsAndComesBack) {
    auto camera = plugIn("cam", "Camera", "both");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());

    const auto pids = std::filesystem::path(std::getenv("VIRTUAL_DESKTOP_PIDS"));
    const auto pid = std::stoi(TestSupport::readFile(pids / "pipewire"));
    // Whoever does not answer costs a list, never a hang.
    kill(pid, SIGSTOP);
    {
        PipeWireCameras fresh;
        EXPECT_LT(runningTimeOf([&] { EXPECT_THAT(fresh.devices(), IsEmpty()); }), std::chrono::seconds(5));
        EXPECT_FALSE(fresh.isReachable());
        const auto lookAgain = [&] {
            for (int turn = 0; turn < 20; ++turn) {
                EXPECT_THAT(fresh.devices(), IsEmpty());
            }
        };
        EXPECT_LT(runningTimeOf(lookAgain), std::chrono::seconds(5)) << "only the first look waits";
    }
    kill(pid, SIGCONT);
    EXPECT_EQ(services.devices().size(), 1U);

    kill(pid, SIGKILL);
    EXPECT_TRUE(goesDark());
    EXPECT_TRUE(spinUntil([&] { return services.devices().empty(); }, patience));
    EXPECT_EQ(services.defaultDevice(), std::nullopt);
    EXPECT_TRUE(session->isRunning());

    // Only then is nothing left of the first one, whose connections end before its hold of the socket.
    ASSERT_TRUE(spinUntil([&] { return hasEnded(pid); }, patience));
    const auto socket = std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / "pipewire-0";
    std::filesystem::remove(socket);
    const ChildProcess daemon({"pipewire"});
    ASSERT_TRUE(spinUntil([&] { return TestSupport::isListening(socket); }, patience));
    // Without anybody who tells the daemon of cameras, those of the kernel count.
    auto devices = std::make_shared<TestSupport::FakeVideoDevices>();
    devices->byPath["/dev/video0"] = std::make_shared<TestSupport::FakeVideoDevice>();
    LinuxCaptureServices both(mainQueue, workQueues, std::make_unique<PipeWireCameras>(),
                              std::make_unique<LinuxPlatform::V4l2Cameras>(devices, "/sys"));
    EXPECT_TRUE(spinUntil(
        [&] {
            return both.devices() == std::vector{CaptureDevice{"v4l2:usb-1", "Camera"}};
        },
        patience));
    int news = 0;
    const auto observer = both.observeDevices([&] { ++news; });
    const ChildProcess sessionManager({"wireplumber"});
    camera = plugIn("cam", "Camera", "both");
    EXPECT_TRUE(comesOn());
    EXPECT_TRUE(showsBars(*preview->picture()));
    EXPECT_TRUE(spinUntil(
        [&] {
            return both.devices() == std::vector{CaptureDevice{"cam", "Camera"}} && news > 0;
        },
        patience));
}

} // namespace
