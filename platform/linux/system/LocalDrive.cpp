#include "platform/linux/system/LocalDrive.h"

#include <algorithm>
#include <array>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace LinuxPlatform {
namespace {

constexpr unsigned long zfsMagic = 0x2FC12FC1;
constexpr std::array<unsigned long, 8> localFileSystems{
    EXT4_SUPER_MAGIC,      BTRFS_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC,
    OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,  RAMFS_MAGIC,     zfsMagic,
};

} // namespace

bool isOnLocalDrive(int descriptor) {
    struct statfs status {};
    return ::fstatfs(descriptor, &status) == 0 &&
           std::ranges::find(localFileSystems, static_cast<unsigned long>(status.f_type)) !=
               localFileSystems.end();
}

} // namespace LinuxPlatform
