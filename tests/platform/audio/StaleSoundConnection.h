#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <list>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace TestSupport {

/// Stands between this program and its sound server while it exists. The first connection is left with what
/// the server said of itself at first, and told of no change; later ones are passed on as they are.
class StaleSoundConnection {
public:
    explicit StaleSoundConnection(const std::filesystem::path& folder)
        : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const auto path = folder / "stale";
        const auto address = addressOf(path);
        if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(socket_, 16) != 0) {
            throw std::runtime_error(std::strerror(errno));
        }
        // What is shared as memory could not be passed on.
        const auto configuration = folder / "client.conf";
        std::ofstream(configuration) << "autospawn = no\nenable-shm = no\n";
        setenv("PULSE_CLIENTCONFIG", configuration.c_str(), 1);
        setenv("PULSE_SERVER", ("unix:" + path.string()).c_str(), 1);
        thread_ = std::thread([this] { run(); });
    }
    ~StaleSoundConnection() {
        unsetenv("PULSE_SERVER");
        unsetenv("PULSE_CLIENTCONFIG");
        isEnding_ = true;
        thread_.join();
        for (const auto& call : calls_) {
            close(call.client);
            close(call.server);
        }
        close(socket_);
    }
    StaleSoundConnection(const StaleSoundConnection&) = delete;
    StaleSoundConnection& operator=(const StaleSoundConnection&) = delete;

private:
    static constexpr std::size_t headerSize = 20;
    static constexpr std::uint32_t reply = 2;
    static constexpr std::uint32_t getServerInfo = 20;
    static constexpr std::uint32_t subscribe = 35;

    struct Call {
        int client;
        int server;
        bool isStale;
        std::string fromClient;
        std::string fromServer;
        std::set<std::uint32_t> questions;
        std::optional<std::string> firstAnswer;
        bool isOver = false;
    };

    static sockaddr_un addressOf(const std::filesystem::path& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        return address;
    }

    void run() {
        while (!isEnding_) {
            std::vector<pollfd> waiting{{socket_, POLLIN, 0}};
            for (const auto& call : calls_) {
                waiting.push_back({call.client, POLLIN, 0});
                waiting.push_back({call.server, POLLIN, 0});
            }
            poll(waiting.data(), waiting.size(), 50);
            auto at = waiting.begin() + 1;
            for (auto& call : calls_) {
                const bool isFromClient = (at++)->revents != 0;
                const bool isFromServer = (at++)->revents != 0;
                call.isOver = (isFromClient && !pass(call, call.client, call.server, call.fromClient)) ||
                              (isFromServer && !pass(call, call.server, call.client, call.fromServer));
            }
            calls_.remove_if([](const Call& call) {
                if (call.isOver) {
                    close(call.client);
                    close(call.server);
                }
                return call.isOver;
            });
            if (waiting.front().revents != 0) {
                answer();
            }
        }
    }

    void answer() {
        const int client = accept(socket_, nullptr, nullptr);
        const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const auto address =
            addressOf(std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / "pulse/native");
        if (connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            calls_.push_back({client, server, !std::exchange(hasCalled_, true), {}, {}, {}, {}});
        } else {
            close(client);
            close(server);
        }
    }

    static std::uint32_t number(const std::string& text, std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t byte = 0; byte < 4; ++byte) {
            value = value << 8U | static_cast<unsigned char>(text[at + byte]);
        }
        return value;
    }

    /// Passes on what is whole; false when the connection is over.
    static bool pass(Call& call, int from, int to, std::string& pending) {
        std::array<char, 65536> piece{};
        const auto count = read(from, piece.data(), piece.size());
        if (count <= 0) {
            return false;
        }
        pending.append(piece.data(), static_cast<std::size_t>(count));
        while (pending.size() >= headerSize && pending.size() >= headerSize + number(pending, 0)) {
            auto packet = pending.substr(0, headerSize + number(pending, 0));
            pending.erase(0, packet.size());
            if (call.isStale) {
                falsify(call, from == call.client, packet);
            }
            for (std::size_t written = 0; written < packet.size();) {
                // The other end may have gone.
                const auto more = send(to, packet.data() + written, packet.size() - written, MSG_NOSIGNAL);
                if (more <= 0) {
                    return false;
                }
                written += static_cast<std::size_t>(more);
            }
        }
        return true;
    }

    /// A packet is a header of five numbers and, where it is none of sound, a command and its tag, each
    /// number after a letter.
    static void falsify(Call& call, bool isFromClient, std::string& packet) {
        constexpr std::uint32_t noSound = 0xFFFFFFFF;
        constexpr std::size_t tagAt = headerSize + 6;
        constexpr std::size_t argumentAt = headerSize + 11;
        if (number(packet, 4) != noSound || packet.size() < headerSize + 10) {
            return;
        }
        const auto command = number(packet, headerSize + 1);
        const auto tag = number(packet, tagAt);
        if (isFromClient && command == getServerInfo) {
            call.questions.insert(tag);
        } else if (isFromClient && command == subscribe) {
            packet.replace(argumentAt, 4, 4, '\0');
        } else if (!isFromClient && command == reply && call.questions.erase(tag) > 0) {
            const auto itsTag = packet.substr(tagAt, 4);
            packet = call.firstAnswer ? *call.firstAnswer : packet;
            call.firstAnswer = packet;
            packet.replace(tagAt, 4, itsTag);
        }
    }

    int socket_;
    bool hasCalled_ = false;
    std::list<Call> calls_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

} // namespace TestSupport
