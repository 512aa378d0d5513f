#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace LinuxPlatform {

struct SocketAnswer {
    std::string bytes;
    /// Who listens; absent where the kernel does not know.
    std::optional<std::uint32_t> process;
};

/// Sends `request` to whoever listens at a Unix socket and collects what comes back until `isComplete` says
/// that it is all. Absent when nobody listens, or the answer is not complete after `patience`.
std::optional<SocketAnswer> askSocket(const std::filesystem::path& socket, std::string_view request,
                                      const std::function<bool(std::string_view bytes)>& isComplete,
                                      std::chrono::milliseconds patience);

} // namespace LinuxPlatform
