#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The system calls that the kernel's video devices need. Any thread. Failures are negative error numbers.
class VideoDeviceCalls {
public:
    virtual ~VideoDeviceCalls() = default;

    /// The paths of all video devices, such as "/dev/video0", in the order of their numbers.
    virtual std::vector<std::string> devices() = 0;
    /// Something to wait for like a device, readable when devices come, go or change hands, and to be closed
    /// like one; negative when that cannot be seen.
    virtual int watch() = 0;
    /// What made it readable has been noticed.
    virtual void takeNews(int watch) = 0;
    /// Whether this user may open the device.
    virtual bool isAllowed(const std::string& path) = 0;
    virtual int open(const std::string& path) = 0;
    virtual void close(int device) = 0;
    virtual int control(int device, unsigned long request, void* argument) = 0;
    /// Empty when it fails.
    virtual std::span<std::byte> map(int device, std::size_t length, std::int64_t offset) = 0;
    virtual void unmap(std::span<std::byte> memory) = 0;
    /// Until the device has something to read, `wakeUp` is readable or the time is over. True in the first
    /// case. A negative device is waited for in vain.
    virtual bool wait(int device, int wakeUp, std::chrono::milliseconds time) = 0;
};

/// Those of the kernel.
class KernelVideoDeviceCalls : public VideoDeviceCalls {
public:
    std::vector<std::string> devices() override;
    int watch() override;
    void takeNews(int watch) override;
    bool isAllowed(const std::string& path) override;
    int open(const std::string& path) override;
    void close(int device) override;
    int control(int device, unsigned long request, void* argument) override;
    std::span<std::byte> map(int device, std::size_t length, std::int64_t offset) override;
    void unmap(std::span<std::byte> memory) override;
    bool wait(int device, int wakeUp, std::chrono::milliseconds time) override;
};

} // namespace LinuxPlatform
