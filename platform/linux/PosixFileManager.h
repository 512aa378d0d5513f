#pragma once

#include "platform/FileManager.h"

namespace LinuxPlatform {

class PosixFileManager : public Platform::FileManager {
public:
    std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) override;
    bool removeItem(const std::string& path) override;
    bool write(const std::vector<std::byte>& contents, const std::string& path) override;
};

} // namespace LinuxPlatform
