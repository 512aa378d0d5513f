#pragma once

#include "platform/linux/i3/I3Message.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace PlatformTests {

inline QByteArray message(std::uint32_t type, const QByteArray& payload) {
    return LinuxPlatform::i3Message(static_cast<LinuxPlatform::I3Request>(type), payload);
}

inline QByteArray message(LinuxPlatform::I3Request type, const QByteArray& payload) {
    return LinuxPlatform::i3Message(type, payload);
}

/// Answers as the test wants.
class ScriptedI3 {
public:
    ScriptedI3() { listen(); }
    ~ScriptedI3() {
        hangUp();
        ::close(listener_);
    }
    ScriptedI3(const ScriptedI3&) = delete;
    ScriptedI3& operator=(const ScriptedI3&) = delete;

    std::filesystem::path path() const { return folder_.path() / "socket"; }

    void listen() {
        listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const auto text = path().string();
        std::memcpy(address.sun_path, text.data(), text.size());
        ::unlink(text.c_str());
        EXPECT_EQ(::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener_, 4), 0);
    }
    void stopListening() {
        ::close(listener_);
        ::unlink(path().c_str());
    }
    bool accept() {
        client_ = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        reader_ = {};
        return client_ >= 0;
    }
    /// Waits until somebody is there.
    bool awaitClient() const { return awaitNews(listener_); }
    bool hasClient() const { return awaitNews(listener_, 0); }
    /// Waits until the client has said something; false when it has hung up.
    bool awaitRequest() const {
        char first = 0;
        return awaitNews(client_) && ::recv(client_, &first, 1, MSG_PEEK) > 0;
    }
    void hangUp() {
        if (client_ >= 0) {
            ::close(std::exchange(client_, -1));
        }
    }
    /// What it is asked next.
    std::optional<LinuxPlatform::I3Message> next() {
        std::array<char, 4096> block{};
        const auto count = ::recv(client_, block.data(), block.size(), 0);
        reader_.add(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        return reader_.next();
    }
    void say(const QByteArray& bytes) const {
        EXPECT_EQ(::send(client_, bytes.data(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL),
                  bytes.size());
    }

private:
    static bool awaitNews(int descriptor, int deadlineInMilliseconds = 20'000) {
        pollfd question{descriptor, POLLIN, 0};
        return ::poll(&question, 1, deadlineInMilliseconds) > 0;
    }

    TestSupport::TemporaryFolder folder_;
    int listener_ = -1;
    int client_ = -1;
    LinuxPlatform::I3MessageReader reader_;
};

} // namespace PlatformTests
