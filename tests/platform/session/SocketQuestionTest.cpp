#include "platform/linux/session/SocketQuestion.h"

#include "platform/linux/session/BoundedQuestion.h"
#include "platform/linux/system/Patience.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <semaphore>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using LinuxPlatform::answerWithin;
using LinuxPlatform::askSocket;
using LinuxPlatform::Patience;
using std::chrono::milliseconds;

constexpr std::chrono::seconds enough{20};
constexpr milliseconds short_{50};

bool isFive(std::string_view bytes) {
    return bytes.size() >= 5;
}

/// Listens at a socket of its own; what it does with a client is the test's.
class Listener {
public:
    Listener() : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const auto text = path().string();
        std::memcpy(address.sun_path, text.data(), text.size());
        EXPECT_EQ(::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(descriptor_, 1), 0);
    }
    ~Listener() { ::close(descriptor_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::filesystem::path path() const { return folder_.path() / "socket"; }
    int accept() const { return ::accept(descriptor_, nullptr, nullptr); }
    void stopListening() { ::shutdown(descriptor_, SHUT_RDWR); }

private:
    TestSupport::TemporaryFolder folder_;
    int descriptor_;
};

TEST(SocketQuestionTest, CollectsTheWholeAnswer) {
    const Listener listener;
    std::string heard;
    std::jthread server([&] {
        const int client = listener.accept();
        std::array<char, 16> block{};
        heard.assign(block.data(), static_cast<std::size_t>(::recv(client, block.data(), block.size(), 0)));
        for (const auto* part : {"an", "sw", "er"}) {
            EXPECT_EQ(::send(client, part, 2, 0), 2);
        }
        ::close(client);
    });
    const auto answer = askSocket(listener.path(), "who?", isFive, enough);
    server.join();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->bytes.substr(0, 5), "answe");
    EXPECT_EQ(answer->process, static_cast<std::uint32_t>(getpid()));
    EXPECT_EQ(heard, "who?");
}

TEST(SocketQuestionTest, NobodyAnswers) {
    const TestSupport::TemporaryFolder folder;
    TestSupport::writeFile(folder.path() / "file", "");
    EXPECT_FALSE(askSocket(folder.path() / "missing", "who?", isFive, enough));
    EXPECT_FALSE(askSocket(folder.path() / "file", "who?", isFive, enough));
    EXPECT_FALSE(askSocket({}, "who?", isFive, enough));
    EXPECT_FALSE(askSocket(folder.path() / std::string(200, 'x'), "who?", isFive, enough));
    Listener gone;
    gone.stopListening();
    EXPECT_FALSE(askSocket(gone.path(), "who?", isFive, enough));
}

TEST(SocketQuestionTest, WaitsNoLongerThanItIsTold) {
    const Listener silent;
    EXPECT_FALSE(askSocket(silent.path(), "who?", isFive, short_));
}

TEST(SocketQuestionTest, AnAnswerThatBreaksOffIsNone) {
    const Listener listener;
    std::jthread server([&] {
        const int client = listener.accept();
        EXPECT_EQ(::send(client, "an", 2, 0), 2);
        ::close(client);
    });
    EXPECT_FALSE(askSocket(listener.path(), "who?", isFive, enough));
}

TEST(PatienceTest, WhatComesAtOnceTakesNothingOfIt) {
    Patience waiting(enough);
    for (int part = 0; part < 1000; ++part) {
        ASSERT_TRUE(waiting.nextLook()) << part;
    }
}

TEST(PatienceTest, AStandstillTakesNoMoreOfItThanTheLookItFallsInto) {
    Patience::Clock::time_point now;
    Patience waiting(milliseconds(100), [&] { return now; });
    for (int look = 0; look < 2; ++look) {
        EXPECT_EQ(waiting.nextLook(), milliseconds(50)) << look;
        now += std::chrono::hours(1);
    }
    EXPECT_EQ(waiting.nextLook(), std::nullopt);
}

TEST(PatienceTest, WhoSaysALittleNowAndThenUsesItUp) {
    Patience::Clock::time_point now;
    Patience waiting(milliseconds(100), [&] { return now; });
    for (const auto look : {50, 50, 40, 10}) {
        EXPECT_EQ(waiting.nextLook(), milliseconds(look));
        now += milliseconds(30);
    }
    EXPECT_EQ(waiting.nextLook(), std::nullopt);
}

TEST(BoundedQuestionTest, AnswersOrGivesUp) {
    EXPECT_EQ(answerWithin<int>(Patience(enough), [] { return 7; }), 7);
    const auto hold = std::make_shared<std::binary_semaphore>(0);
    const auto done = std::make_shared<std::binary_semaphore>(0);
    const auto question = [=] {
        hold->acquire();
        done->release();
        return 7;
    };
    EXPECT_FALSE(answerWithin<int>(Patience(short_), question));
    hold->release();
    EXPECT_TRUE(done->try_acquire_for(enough)) << "the question goes on alone";
}

TEST(BoundedQuestionTest, AMachineThatStandsStillIsNoSilence) {
    const auto hold = std::make_shared<std::binary_semaphore>(0);
    int looks = 0;
    Patience::Clock::time_point now;
    // Every look falls into a standstill of an hour.
    const Patience waiting(enough, [&] {
        if (++looks == 5) {
            hold->release();
        }
        return now += std::chrono::hours(1);
    });
    const auto answer = answerWithin<int>(waiting, [=] {
        hold->acquire();
        return 7;
    });
    EXPECT_EQ(answer, 7);
}

} // namespace
