#include "platform/linux/system/PosixFileManager.h"

#include "platform/linux/system/FileReplacement.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace LinuxPlatform {
namespace {

using Platform::WriteOutcome;

std::optional<std::vector<std::string>> list(const std::string& path) {
    std::error_code error;
    std::filesystem::directory_iterator iterator(path, error);
    std::vector<std::string> contents;
    for (; !error && iterator != std::filesystem::directory_iterator(); iterator.increment(error)) {
        contents.push_back(iterator->path().string());
    }
    return error ? std::nullopt : std::optional(std::move(contents));
}

WriteOutcome outcomeOf(const std::error_code& error) {
    if (!error) {
        return WriteOutcome::written;
    }
    if (error == std::errc::no_space_on_device || error == std::errc::file_too_large ||
        error.value() == EDQUOT) {
        return WriteOutcome::noSpace;
    }
    const bool isForbidden = error == std::errc::permission_denied ||
                             error == std::errc::operation_not_permitted ||
                             error == std::errc::read_only_file_system;
    return isForbidden ? WriteOutcome::notAllowed : WriteOutcome::failed;
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

WriteOutcome PosixFileManager::write(const std::vector<std::byte>& contents, const std::string& path) {
    std::error_code error;
    // A device or a folder is nothing to be replaced.
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        return WriteOutcome::failed;
    }
    return outcomeOf(replaceFile(path, {reinterpret_cast<const char*>(contents.data()), contents.size()}));
}

} // namespace LinuxPlatform
