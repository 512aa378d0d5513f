#include "platform/linux/session/SocketQuestion.h"

#include "platform/linux/system/LocalSocket.h"
#include "platform/linux/system/Patience.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

constexpr std::size_t longestAnswer = std::size_t{1} << 20U;

class Socket {
public:
    explicit Socket(const std::filesystem::path& path) : descriptor_(connectToSocket(path)) {}
    ~Socket() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool isConnected() const { return descriptor_ >= 0; }

    bool send(std::string_view bytes) {
        return ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// Absent at the end, be it that of the patience or that of the connection.
    std::optional<std::string> receive(Patience& patience) {
        std::array<char, 4096> block{};
        while (isReadable(patience)) {
            const auto count = ::recv(descriptor_, block.data(), block.size(), 0);
            if (count > 0) {
                return std::string(block.data(), static_cast<std::size_t>(count));
            }
            if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
                break;
            }
        }
        return std::nullopt;
    }

    std::optional<std::uint32_t> process() const {
        ucred credentials{};
        socklen_t size = sizeof credentials;
        const bool isKnown =
            getsockopt(descriptor_, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 && credentials.pid > 0;
        return isKnown ? std::optional(static_cast<std::uint32_t>(credentials.pid)) : std::nullopt;
    }

private:
    bool isReadable(Patience& patience) const {
        while (const auto look = patience.nextLook()) {
            pollfd question{descriptor_, POLLIN, 0};
            const auto count = ::poll(&question, 1, static_cast<int>(look->count()));
            if (count > 0 || (count < 0 && errno != EINTR)) {
                return count > 0;
            }
        }
        return false;
    }

    int descriptor_;
};

} // namespace

std::optional<SocketAnswer> askSocket(const std::filesystem::path& socket, std::string_view request,
                                      const std::function<bool(std::string_view)>& isComplete,
                                      std::chrono::milliseconds patience) {
    Patience waiting(patience);
    Socket server(socket);
    if (!server.isConnected() || !server.send(request)) {
        return std::nullopt;
    }
    SocketAnswer answer{{}, server.process()};
    while (!isComplete(answer.bytes)) {
        const auto more = server.receive(waiting);
        if (!more || answer.bytes.size() > longestAnswer) {
            return std::nullopt;
        }
        answer.bytes += *more;
    }
    return answer;
}

} // namespace LinuxPlatform
