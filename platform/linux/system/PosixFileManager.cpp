#include "platform/linux/system/PosixFileManager.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace LinuxPlatform {
namespace {

std::optional<std::vector<std::string>> list(const std::string& path) {
    std::error_code error;
    std::filesystem::directory_iterator iterator(path, error);
    std::vector<std::string> contents;
    for (; !error && iterator != std::filesystem::directory_iterator(); iterator.increment(error)) {
        contents.push_back(iterator->path().string());
    }
    return error ? std::nullopt : std::optional(std::move(contents));
}

} // namespace

PosixFileManager::PosixFileManager() : listing_(list) {}

std::optional<std::vector<std::string>> PosixFileManager::contentsOfDirectory(const std::string& path) {
    return listing_.contents(path);
}

bool PosixFileManager::removeItem(const std::string& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
    return !error;
}

bool PosixFileManager::write(const std::vector<std::byte>& contents, const std::string& path) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(contents.data()), static_cast<std::streamsize>(contents.size()));
    file.close();
    return file.good();
}

} // namespace LinuxPlatform
