#include "platform/linux/system/LocalSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace LinuxPlatform {

int connectToSocket(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto& name = path.native();
    if (name.empty() || name.size() >= sizeof address.sun_path) {
        return -1;
    }
    std::memcpy(address.sun_path, name.data(), name.size());
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor >= 0 &&
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

void serveSocket(const SocketWork& work, Patience patience) {
    for (int socket = work.socket(); socket >= 0; socket = work.socket()) {
        const auto look = patience.nextLook();
        if (!look) {
            return;
        }
        const short wanted = work.wantsToWrite() ? POLLIN | POLLOUT : POLLIN;
        pollfd question{socket, wanted, 0};
        if (::poll(&question, 1, static_cast<int>(look->count())) < 0 && errno != EINTR) {
            return;
        }
        if ((question.revents & POLLOUT) != 0) {
            work.write();
        }
        if ((question.revents & ~POLLOUT) != 0) {
            work.read();
        }
    }
}

} // namespace LinuxPlatform
