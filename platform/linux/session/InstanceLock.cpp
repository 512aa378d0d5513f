#include "platform/linux/session/InstanceLock.h"

#include "platform/linux/system/RuntimeFolder.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace LinuxPlatform {

InstanceLock::InstanceLock(const std::filesystem::path& file)
    : descriptor_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
    isTaken_ = descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

InstanceLock::~InstanceLock() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::filesystem::path InstanceLock::fileFor(std::string display) {
    std::ranges::replace(display, '/', '_');
    return runtimeFolder() / ("curtain" + display + ".lock");
}

} // namespace LinuxPlatform
