#include "platform/linux/system/BoundedReader.h"

#include "platform/linux/system/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

/// Values beyond this size are no settings; reading stops there.
constexpr std::size_t largestValue = std::size_t{64} << 20U;

FileReading failure(int error) {
    return {FileReading::Outcome::failed, {}, {error, std::generic_category()}};
}

FileReading whyItCannotBeOpened(const fs::path& path, int error) {
    struct stat status {};
    const bool isMissing = error == ENOENT || error == ENOTDIR;
    // A link that leads nowhere today may lead to a drive that comes back.
    return isMissing && ::lstat(path.c_str(), &status) != 0 ? FileReading{} : failure(error);
}

} // namespace

FileReading readSettingsFile(const fs::path& path) {
    // A named pipe in the place of a file must not block.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        return whyItCannotBeOpened(path, errno);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        return failure(errno);
    }
    FileReading reading{FileReading::Outcome::notAFile, {}, {}};
    if (!S_ISREG(status.st_mode)) {
        return reading;
    }
    std::array<char, 65536> block;
    while (reading.bytes.size() <= largestValue) {
        const auto count = ::read(file.get(), block.data(), block.size());
        if (count == 0) {
            reading.outcome = FileReading::Outcome::read;
            return reading;
        }
        if (count < 0 && errno != EINTR) {
            return failure(errno);
        }
        reading.bytes.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    reading.bytes.clear();
    return reading;
}

BoundedReader::BoundedReader(Read read, LocalDrives drives, std::chrono::milliseconds patience)
    : read_(std::move(read)),
      drives_(std::move(drives)),
      patience_(patience) {}

FileReading BoundedReader::read(const fs::path& path) {
    return drives_.isLocal(path) ? read_(path) : readBeside(path);
}

FileReading BoundedReader::readBeside(const fs::path& path) {
    auto patience = patience_;
    auto late = late_.find(path);
    if (late != late_.end() && late->second.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
        // That is how it was when it was asked for, not how it is.
        late_.erase(late);
        late = late_.end();
    }
    if (late == late_.end()) {
        std::promise<FileReading> promise;
        late = late_.emplace(path, promise.get_future()).first;
        std::thread([read = read_, path, promise = std::move(promise)]() mutable {
            promise.set_value(read(path));
        }).detach();
    } else {
        patience = std::chrono::milliseconds(0);
    }
    if (late->second.wait_for(patience) != std::future_status::ready) {
        return failure(ETIMEDOUT);
    }
    auto reading = late->second.get();
    late_.erase(late);
    return reading;
}

} // namespace LinuxPlatform
