#pragma once

#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace LinuxPlatform {

/// Wakes a thread that waits for the descriptor to become readable. Any thread.
class WakeUp {
public:
    WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;
    ~WakeUp() { close(descriptor_); }

    int descriptor() const { return descriptor_; }
    void signal() const {
        const std::uint64_t one = 1;
        // The counter cannot be full.
        [[maybe_unused]] const auto written = write(descriptor_, &one, sizeof one);
    }

    /// What was signalled before has been noticed.
    void clear() const {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto got = read(descriptor_, &count, sizeof count);
    }

private:
    int descriptor_;
};

} // namespace LinuxPlatform
