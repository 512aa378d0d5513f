#pragma once

#include <filesystem>
#include <string>

namespace LinuxPlatform {

/// Keeps the program to one process where there is no session bus to agree on: a lock on a file, which the
/// kernel takes back however the process ends. The file stays.
class InstanceLock {
public:
    /// Does not wait.
    explicit InstanceLock(const std::filesystem::path& file);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Another process has it. False as well where the file cannot be opened or locked.
    bool isTaken() const { return isTaken_; }

    /// The program's file among the user's own, one for each display by its name as in DISPLAY.
    static std::filesystem::path fileFor(std::string display);

private:
    int descriptor_;
    bool isTaken_ = false;
};

} // namespace LinuxPlatform
