#include "platform/linux/system/LocalDrives.h"

#include "platform/linux/system/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

constexpr unsigned long zfsMagic = 0x2FC12FC1;
constexpr std::array<unsigned long, 8> localFileSystems{
    EXT4_SUPER_MAGIC,      BTRFS_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC,
    OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,  RAMFS_MAGIC,     zfsMagic,
};

bool isOnLocalDrive(int descriptor) {
    struct statfs status {};
    return ::fstatfs(descriptor, &status) == 0 &&
           std::ranges::find(localFileSystems, static_cast<unsigned long>(status.f_type)) !=
               localFileSystems.end();
}

} // namespace

bool isOnLocalDrive(const fs::path& path) {
    const Descriptor descriptor(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (descriptor.isOpen()) {
        return isOnLocalDrive(descriptor.get());
    }
    // What fails in another way may lie on a drive that is in trouble.
    const bool isAbsent = errno == ENOENT || errno == ENOTDIR;
    const auto folder = path.parent_path();
    return isAbsent && folder != path && isOnLocalDrive(folder);
}

LocalDrives::LocalDrives(Ask ask, std::chrono::milliseconds patience)
    : ask_(std::move(ask)),
      patience_(patience) {}

bool LocalDrives::isLocal(const fs::path& path) {
    if (const auto known = known_.find(path); known != known_.end()) {
        return known->second;
    }
    const bool isNew = !late_.contains(path);
    auto& answer = isNew ? late_.emplace(path, askBeside(path)).first->second : late_.at(path);
    if (answer.wait_for(isNew ? patience_ : std::chrono::milliseconds(0)) != std::future_status::ready) {
        return false;
    }
    const bool isLocal = answer.get();
    late_.erase(path);
    known_.emplace(path, isLocal);
    return isLocal;
}

std::future<bool> LocalDrives::askBeside(const fs::path& path) const {
    std::promise<bool> promise;
    auto answer = promise.get_future();
    std::thread([ask = ask_, path, promise = std::move(promise)]() mutable {
        promise.set_value(ask(path));
    }).detach();
    return answer;
}

} // namespace LinuxPlatform
