#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <map>

namespace LinuxPlatform {

/// Whether a file or folder, or where there is none what it would stand in, lies on a drive of this computer,
/// which answers in any case. Any thread; another drive may keep it waiting.
bool isOnLocalDrive(const std::filesystem::path& path);

/// Tells which paths lie on a drive of this computer, without waiting for another one that does not answer.
/// Single thread.
class LocalDrives {
public:
    using Ask = std::function<bool(const std::filesystem::path& path)>;

    /// `ask` is called on threads of its own, and may outlive this object.
    explicit LocalDrives(Ask ask = isOnLocalDrive,
                         std::chrono::milliseconds patience = std::chrono::seconds(1));

    /// Asked once a path. False also for as long as there is no answer.
    bool isLocal(const std::filesystem::path& path);

private:
    std::future<bool> askBeside(const std::filesystem::path& path) const;

    Ask ask_;
    std::chrono::milliseconds patience_;
    std::map<std::filesystem::path, bool> known_;
    std::map<std::filesystem::path, std::future<bool>> late_;
};

} // namespace LinuxPlatform
