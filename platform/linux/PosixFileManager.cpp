#include "platform/linux/PosixFileManager.h"

#include <filesystem>
#include <system_error>

namespace LinuxPlatform {

std::optional<std::vector<std::string>> PosixFileManager::contentsOfDirectory(const std::string& path) {
    std::error_code error;
    std::filesystem::directory_iterator iterator(path, error);
    std::vector<std::string> contents;
    for (; !error && iterator != std::filesystem::directory_iterator(); iterator.increment(error)) {
        contents.push_back(iterator->path().string());
    }
    return error ? std::nullopt : std::optional(std::move(contents));
}

} // namespace LinuxPlatform
