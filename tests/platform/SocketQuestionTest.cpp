#include "platform/linux/session/SocketQuestion.h"

#include "platform/linux/session/BoundedQuestion.h"
#include "platform/linux/system/Patience.h"
#include "tests/support/ForkedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
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
using TestSupport::ForkedChild;

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

TEST(BoundedQuestionTest, AnswersOrGivesUp) {
    EXPECT_EQ(answerWithin<int>(enough, [] { return 7; }), 7);
    const auto hold = std::make_shared<std::binary_semaphore>(0);
    const auto done = std::make_shared<std::binary_semaphore>(0);
    const auto question = [=] {
        hold->acquire();
        done->release();
        return 7;
    };
    EXPECT_FALSE(answerWithin<int>(short_, question));
    hold->release();
    EXPECT_TRUE(done->try_acquire_for(enough)) << "the question goes on alone";
}

TEST(BoundedQuestionTest, AMachineThatStandsStillIsNoSilence) {
    std::array<int, 2> asked{};
    ASSERT_EQ(pipe(asked.data()), 0);
    ForkedChild child([&] {
        const auto answer = answerWithin<int>(milliseconds(1500), [&] {
            EXPECT_EQ(write(asked[1], "?", 1), 1);
            for (int step = 0; step < 10; ++step) {
                std::this_thread::sleep_for(milliseconds(10));
            }
            return 7;
        });
        EXPECT_EQ(answer, 7);
    });
    // Otherwise a child that ends early would not end the question.
    close(asked[1]);
    char question = 0;
    ASSERT_EQ(read(asked[0], &question, 1), 1);
    child.kill(SIGSTOP);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    child.kill(SIGCONT);
    EXPECT_EQ(child.wait(), 0);
    close(asked[0]);
}

} // namespace
