#pragma once

#include <spa/buffer/buffer.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// A look into memory that belongs to another process, which may write, lie about and shrink it at any time.
/// One object for each plane, since it may have to hold a copy.
class ProducerMemory {
public:
    struct Plane {
        std::span<const std::byte> bytes;
        int stride = 0;
        bool isDamaged = false;
    };

    /// What the buffer is said to hold, and no more than it does; absent for memory that has shrunk. Good
    /// until the next call, as long as the buffer is not handed back.
    std::optional<Plane> look(const spa_data& data);

private:
    std::optional<std::span<const std::byte>> copy(const spa_data& data, std::size_t offset,
                                                   std::size_t size);

    std::vector<std::byte> copy_;
};

} // namespace LinuxPlatform
