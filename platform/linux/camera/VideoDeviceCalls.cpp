#include "platform/linux/camera/VideoDeviceCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

std::optional<int> numberOf(std::string_view name) {
    constexpr std::string_view prefix = "video";
    int number = 0;
    if (!name.starts_with(prefix)) {
        return std::nullopt;
    }
    const auto digits = name.substr(prefix.size());
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(number)
                                                                        : std::nullopt;
}

} // namespace

std::vector<std::string> KernelVideoDeviceCalls::devices() {
    std::vector<std::pair<int, std::string>> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/dev", error), end; !error && entry != end;
         entry.increment(error)) {
        if (const auto number = numberOf(entry->path().filename().string())) {
            found.emplace_back(*number, entry->path().string());
        }
    }
    std::ranges::sort(found);
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [number, path] : found) {
        paths.push_back(std::move(path));
    }
    return paths;
}

int KernelVideoDeviceCalls::watch() {
    const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    // Whoever makes a device gives it to its users a moment later.
    if (watch >= 0 && ::inotify_add_watch(watch, "/dev", IN_CREATE | IN_DELETE | IN_ATTRIB) < 0) {
        ::close(watch);
        return -1;
    }
    return watch;
}

void KernelVideoDeviceCalls::takeNews(int watch) {
    std::array<char, 4096> events{};
    while (::read(watch, events.data(), events.size()) > 0) {
    }
}

bool KernelVideoDeviceCalls::isAllowed(const std::string& path) {
    return ::access(path.c_str(), R_OK | W_OK) == 0;
}

int KernelVideoDeviceCalls::open(const std::string& path) {
    const int device = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    return device < 0 ? -errno : device;
}

void KernelVideoDeviceCalls::close(int device) {
    ::close(device);
}

int KernelVideoDeviceCalls::control(int device, unsigned long request, void* argument) {
    int result = 0;
    do {
        result = ::ioctl(device, request, argument);
    } while (result < 0 && errno == EINTR);
    return result < 0 ? -errno : result;
}

std::span<std::byte> KernelVideoDeviceCalls::map(int device, std::size_t length, std::int64_t offset) {
    auto* memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, device, offset);
    if (memory == MAP_FAILED) {
        return {};
    }
    return {static_cast<std::byte*>(memory), length};
}

void KernelVideoDeviceCalls::unmap(std::span<std::byte> memory) {
    ::munmap(memory.data(), memory.size());
}

bool KernelVideoDeviceCalls::wait(int device, int wakeUp, std::chrono::milliseconds time) {
    std::array<pollfd, 2> watched{pollfd{wakeUp, POLLIN, 0}, pollfd{device, POLLIN, 0}};
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(time.count()));
    return ready > 0 && watched[1].revents != 0 && watched[0].revents == 0;
}

} // namespace LinuxPlatform
