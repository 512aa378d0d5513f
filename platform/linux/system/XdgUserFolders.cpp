#include "platform/linux/system/XdgUserFolders.h"

#include <glib.h>
#include <glib/gstdio.h>

#include <filesystem>

namespace LinuxPlatform {
namespace {

constexpr int privateFolderMode = 0700;

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
    const auto* const runtime = g_getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && g_path_is_absolute(runtime) && g_access(runtime, W_OK) == 0) {
        return runtime;
    }
    const auto folder = (std::filesystem::path(g_get_user_cache_dir()) / "curtain").string();
    g_mkdir_with_parents(folder.c_str(), privateFolderMode);
    return folder;
}

} // namespace LinuxPlatform
