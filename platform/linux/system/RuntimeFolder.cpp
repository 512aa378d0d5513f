#include "platform/linux/system/RuntimeFolder.h"

#include <glib.h>

#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t privateMode = S_IRWXU;

/// What others can write to they can also fill with files that look like this user's.
bool isThisUsersAlone(const fs::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 && ::access(folder.c_str(), W_OK | X_OK) == 0;
}

} // namespace

fs::path runtimeFolder() {
    const auto* const runtime = g_getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && g_path_is_absolute(runtime) && isThisUsersAlone(runtime)) {
        return runtime;
    }
    auto folder = fs::path(g_get_user_cache_dir()) / "curtain";
    g_mkdir_with_parents(folder.c_str(), privateMode);
    return folder;
}

} // namespace LinuxPlatform
