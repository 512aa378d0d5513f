#include "platform/linux/system/LocalSocket.h"

#include <cstring>
#include <string>

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

} // namespace LinuxPlatform
