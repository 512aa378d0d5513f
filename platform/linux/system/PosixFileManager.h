#pragma once

#include "platform/FileManager.h"
#include "platform/linux/system/FolderListing.h"

namespace LinuxPlatform {

class PosixFileManager : public Platform::FileManager {
public:
    PosixFileManager();

    /// Absent also when the folder does not answer in time. May be called from any thread.
    std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) override;
    bool removeItem(const std::string& path) override;
    Platform::WriteOutcome write(const std::vector<std::byte>& contents, const std::string& path) override;

private:
    FolderListing listing_;
};

} // namespace LinuxPlatform
