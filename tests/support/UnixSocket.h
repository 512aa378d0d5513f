#pragma once

#include <filesystem>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace TestSupport {

/// A connection that does not block, for the caller to close; -1 where nobody listens.
inline int connectTo(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
        close(socket);
        return -1;
    }
    return socket;
}

/// A server's socket is there before it listens.
inline bool isListening(const std::filesystem::path& path) {
    const int socket = connectTo(path);
    if (socket >= 0) {
        close(socket);
    }
    return socket >= 0;
}

} // namespace TestSupport
