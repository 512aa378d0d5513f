#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/SoundWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

using TestSupport::waitUntil;

/// A user whose sound server is started by its first client; this one writes down that it was.
struct SoundServerStartTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::PulseAudioServices audio{mainQueue};

    SoundServerStartTest() {
        unsetenv("PULSE_SERVER");
        std::filesystem::create_directory(folder.path() / "run");
        std::filesystem::permissions(folder.path() / "run", std::filesystem::perms::owner_all);
        setenv("PULSE_RUNTIME_PATH", (folder.path() / "run").c_str(), 1);
    }

    /// `command` follows the note.
    void serve(const std::string& command, bool isWanted = true) {
        const auto script = folder.path() / "server";
        std::ofstream(script) << "#!/bin/sh\necho started >>" << (folder.path() / "starts").string() << "\n"
                              << command << "\n";
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        std::ofstream(folder.path() / "client.conf")
            << "autospawn = " << (isWanted ? "yes" : "no") << "\ndaemon-binary = " << script.string() << "\n";
        setenv("PULSE_CLIENTCONFIG", (folder.path() / "client.conf").c_str(), 1);
    }

    long starts() const {
        const auto notes = TestSupport::readFile(folder.path() / "starts");
        return std::ranges::count(notes, '\n');
    }
};

struct AdministratorTest : SoundServerStartTest {
    AdministratorTest() { EXPECT_EQ(geteuid(), 0U); }
};

TEST_F(AdministratorTest, StartsNoServer) {
    serve("exit 1");
    EXPECT_EQ(audio.makeEngine()->inputNode().inputFormat().channelCount, 0U);
    EXPECT_EQ(starts(), 0);
}

struct UserTest : SoundServerStartTest {
    UserTest() { EXPECT_NE(geteuid(), 0U); }
};

TEST_F(UserTest, AServerThatCannotBeStartedIsTriedOnce) {
    serve("exit 1");
    const auto engine = audio.makeEngine();
    EXPECT_EQ(engine->inputNode().inputFormat().channelCount, 0U);
    EXPECT_EQ(starts(), 1);
    // While somebody waits for a microphone, the connection is tried again and again.
    EXPECT_FALSE(waitUntil([&] { return starts() > 1; }, std::chrono::seconds(2)));
}

TEST_F(UserTest, WhoWantsNoServerGetsNone) {
    serve("exit 1", false);
    EXPECT_FALSE(audio.hasInputDevice());
    EXPECT_EQ(starts(), 0);
}

using PulseAudioUserTest = UserTest;

TEST_F(PulseAudioUserTest, HearsTheMicrophoneOfTheServerThatItHasStarted) {
    serve("exec pulseaudio -n --daemonize=yes --use-pid-file=no --exit-idle-time=5 --realtime=no "
          "--high-priority=no --load=module-native-protocol-unix "
          "--load='module-null-source source_name=microphone rate=44100 channels=1'");
    const auto engine = audio.makeEngine();
    EXPECT_TRUE(waitUntil([&] {
        return engine->inputNode().inputFormat() == Platform::AudioFormat{1, 44100};
    }));
    EXPECT_EQ(starts(), 1);
}

} // namespace
