#include "platform/linux/system/BoundedFile.h"

#include "platform/linux/system/Descriptor.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {

std::string readStartOfFile(const std::filesystem::path& path, std::size_t limit) {
    // A named pipe without a writer must not hold us up.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) {
        return {};
    }
    std::string text;
    struct stat status {};
    if (fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
        constexpr std::size_t block = 4096;
        while (text.size() < limit) {
            const auto start = text.size();
            text.resize(std::min(start + block, limit));
            const auto count = ::read(file.get(), text.data() + start, text.size() - start);
            text.resize(start + static_cast<std::size_t>(std::max(count, ssize_t{0})));
            if (count <= 0) {
                break;
            }
        }
    }
    return text;
}

} // namespace LinuxPlatform
