#pragma once

#include "platform/linux/system/LocalDrives.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <string>
#include <system_error>

namespace LinuxPlatform {

/// What came of reading a file.
struct FileReading {
    enum class Outcome {
        read,
        /// There is none.
        absent,
        /// What stands there is no file, or beyond every size of settings.
        notAFile,
        /// Something is there, and could not be read this time.
        failed,
    };

    Outcome outcome = Outcome::absent;
    /// What was read.
    std::string bytes;
    /// Why it failed.
    std::error_code error;
};

/// Reads a file of settings on this thread.
FileReading readSettingsFile(const std::filesystem::path& path);

/// Reads files without waiting for a drive that does not answer: its reading goes on beside, and until it
/// comes to an end nobody waits for that file again. Drives of this computer are waited for. Single thread.
class BoundedReader {
public:
    using Read = std::function<FileReading(const std::filesystem::path& path)>;

    /// `read` is called on threads of its own too, and may outlive this object.
    explicit BoundedReader(Read read, LocalDrives drives = LocalDrives(),
                           std::chrono::milliseconds patience = std::chrono::seconds(1));

    /// Failed with `std::errc::timed_out` when there is no answer in time.
    FileReading read(const std::filesystem::path& path);

private:
    FileReading readBeside(const std::filesystem::path& path);

    Read read_;
    LocalDrives drives_;
    std::chrono::milliseconds patience_;
    std::map<std::filesystem::path, std::future<FileReading>> late_;
};

} // namespace LinuxPlatform
