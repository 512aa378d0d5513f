#include "platform/linux/session/SessionBusCheck.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using LinuxPlatform::isBusSilent;

constexpr std::chrono::milliseconds moment{50};
constexpr std::chrono::seconds longTime{20};

/// A socket at which clients can wait.
class Listener {
public:
    explicit Listener(const std::string& name, int backlog = 5) : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        std::memcpy(place.sun_path, name.data(), name.size());
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&place), length), 0);
        EXPECT_EQ(listen(socket_, backlog), 0);
    }
    ~Listener() { close(socket_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Takes one client, hears it out and answers.
    std::string answer(std::string_view text) const {
        const int client = accept(socket_, nullptr, nullptr);
        std::string heard;
        std::array<char, 256> buffer{};
        while (heard.find('\n') == std::string::npos) {
            const auto count = read(client, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            heard.append(buffer.data(), static_cast<std::size_t>(count));
        }
        EXPECT_EQ(write(client, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(client);
        return heard;
    }

private:
    int socket_;
};

struct SessionBusCheckTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    std::string path = (folder.path() / "a bus").string();
    std::string address = "unix:path=" + (folder.path() / "a%20bus").string() + ",guid=0f";
};

TEST_F(SessionBusCheckTest, ABusThatTakesConnectionsAndSaysNothingIsSilent) {
    const Listener listener(path);
    EXPECT_TRUE(isBusSilent(address, moment));
    EXPECT_TRUE(isBusSilent(address + ";unix:path=/nonexistent", moment));
}

TEST_F(SessionBusCheckTest, ABusThatAnswersIsNot) {
    const Listener listener(path);
    std::string heard;
    std::thread bus([&] { heard = listener.answer("OK 0f\r\n"); });
    EXPECT_FALSE(isBusSilent(address, longTime));
    bus.join();
    EXPECT_THAT(heard, testing::StartsWith(std::string(1, '\0') + "AUTH EXTERNAL 3"));
    EXPECT_THAT(heard, testing::EndsWith("\r\n"));
}

TEST_F(SessionBusCheckTest, ABusThatHangsUpIsNot) {
    const Listener listener(path);
    std::thread bus([&] { listener.answer(""); });
    EXPECT_FALSE(isBusSilent(address, longTime));
    bus.join();
}

TEST_F(SessionBusCheckTest, ABusWithAnAbstractNameIsFound) {
    const auto name = "curtain-test-" + std::to_string(getpid());
    const Listener listener('\0' + name);
    EXPECT_TRUE(isBusSilent("unix:abstract=" + name, moment));
}

TEST_F(SessionBusCheckTest, ABusAtWhichTooManyWaitIsSilent) {
    const Listener listener(path, 0);
    EXPECT_TRUE(isBusSilent(address, moment));
    const int waiting = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::memcpy(place.sun_path, path.data(), path.size());
    while (connect(waiting, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0) {
        // The kernel takes a few more than it is told.
        const int another = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
        ASSERT_GE(dup2(another, waiting), 0);
        close(another);
    }
    EXPECT_TRUE(isBusSilent(address, longTime));
    close(waiting);
}

TEST_F(SessionBusCheckTest, WhatIsNoBusIsNotSilent) {
    for (const auto* text :
         {"", "disabled:", "unix:", "unix:path", "unix:path=", "unix:path=/nonexistent/bus", "unix:tmpdir=/x",
          "tcp:host=localhost,port=1", "unix:path=%", "unix:abstract="}) {
        EXPECT_FALSE(isBusSilent(text, moment)) << text;
    }
    EXPECT_FALSE(isBusSilent("unix:path=/" + std::string(300, 'a'), moment))
        << "longer than a socket's name can be";
}

} // namespace
