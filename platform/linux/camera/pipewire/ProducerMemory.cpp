#include "platform/linux/camera/pipewire/ProducerMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// Every field read once, whatever the compiler thinks: between two looks it may be another one.
spa_chunk copyOf(const volatile spa_chunk& shared) {
    spa_chunk chunk{};
    chunk.offset = shared.offset;
    chunk.size = shared.size;
    chunk.stride = shared.stride;
    chunk.flags = shared.flags;
    return chunk;
}

/// Whether reading the mapped memory could end the program: behind the end of its file there is nothing.
bool mayShrink(const spa_data& data) {
    if (data.type != SPA_DATA_MemFd) {
        return false;
    }
    const int file = static_cast<int>(data.fd);
    struct stat status {};
    if (fstat(file, &status) < 0) {
        return true;
    }
    if (!S_ISREG(status.st_mode)) {
        // A device, whose memory stays while it is mapped.
        return false;
    }
    const int seals = fcntl(file, F_GET_SEALS);
    const bool isSealed = seals >= 0 && (seals & F_SEAL_SHRINK) != 0;
    return !isSealed ||
           static_cast<std::uint64_t>(status.st_size) < std::uint64_t{data.mapoffset} + data.maxsize;
}

} // namespace

std::optional<ProducerMemory::Plane> ProducerMemory::look(const spa_data& data) {
    if (!data.data || !data.chunk) {
        return Plane{};
    }
    const auto chunk = copyOf(*data.chunk);
    Plane plane;
    plane.stride = chunk.stride;
    plane.isDamaged = (static_cast<std::uint32_t>(chunk.flags) & SPA_CHUNK_FLAG_CORRUPTED) != 0;
    if (chunk.offset >= data.maxsize || chunk.size == 0) {
        return plane;
    }
    const std::size_t size = std::min<std::size_t>(chunk.size, data.maxsize - chunk.offset);
    if (mayShrink(data)) {
        const auto copied = copy(data, chunk.offset, size);
        if (!copied) {
            return std::nullopt;
        }
        plane.bytes = *copied;
    } else {
        plane.bytes = {static_cast<const std::byte*>(data.data) + chunk.offset, size};
    }
    return plane;
}

std::optional<std::span<const std::byte>> ProducerMemory::copy(const spa_data& data, std::size_t offset,
                                                               std::size_t size) {
    copy_.resize(size);
    std::size_t done = 0;
    while (done < size) {
        const auto at = static_cast<off_t>(std::size_t{data.mapoffset} + offset + done);
        const auto count = pread(static_cast<int>(data.fd), copy_.data() + done, size - done, at);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return std::nullopt;
        }
        done += static_cast<std::size_t>(count);
    }
    return copy_;
}

} // namespace LinuxPlatform
