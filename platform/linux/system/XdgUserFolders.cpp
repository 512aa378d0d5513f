#include "platform/linux/system/XdgUserFolders.h"

#include "platform/linux/system/RuntimeFolder.h"

#include <glib.h>

#include <filesystem>

namespace LinuxPlatform {
namespace {

std::optional<std::string> specialFolder(GUserDirectory directory) {
    g_reload_user_special_dirs_cache();
    const auto* const path = g_get_user_special_dir(directory);
    return path != nullptr ? std::optional<std::string>(path) : std::nullopt;
}

/// By their names only: a folder on a drive that does not answer must not be asked for.
bool isSameFolder(const std::filesystem::path& first, const std::filesystem::path& second) {
    return (first / "").lexically_normal() == (second / "").lexically_normal();
}

} // namespace

std::string XdgUserFolders::home() {
    return g_get_home_dir();
}

std::optional<std::string> XdgUserFolders::desktop() {
    auto folder = specialFolder(G_USER_DIRECTORY_DESKTOP);
    return folder && isSameFolder(*folder, home()) ? std::nullopt : folder;
}

std::optional<std::string> XdgUserFolders::pictures() {
    auto folder = specialFolder(G_USER_DIRECTORY_PICTURES);
    return folder && isSameFolder(*folder, home()) ? std::nullopt : folder;
}

std::string XdgUserFolders::temporary() {
    return runtimeFolder().string();
}

} // namespace LinuxPlatform
