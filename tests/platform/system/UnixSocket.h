#pragma once

#include "platform/linux/system/LocalSocket.h"

#include <filesystem>

#include <unistd.h>

namespace TestSupport {

/// A server's socket is there before it listens.
inline bool isListening(const std::filesystem::path& path) {
    const int socket = LinuxPlatform::connectToSocket(path);
    if (socket >= 0) {
        close(socket);
    }
    return socket >= 0;
}

} // namespace TestSupport
