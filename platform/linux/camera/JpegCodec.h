#pragma once

#include "platform/CaptureServices.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Decodes and encodes JPEG. One thread at a time.
class JpegCodec {
public:
    struct Size {
        int width = 0;
        int height = 0;

        bool operator==(const Size&) const = default;
    };

    struct Decoded {
        /// Null when it could not be decoded at all.
        std::shared_ptr<const Platform::Picture> picture;
        /// Something was missing or wrong, such as the end; part of the picture may be gray.
        bool isDamaged = false;
    };

    JpegCodec();
    JpegCodec(const JpegCodec&) = delete;
    JpegCodec& operator=(const JpegCodec&) = delete;
    ~JpegCodec();

    /// What the header says; absent for what is no JPEG, and for a picture without pixels or with
    /// unreasonably many.
    std::optional<Size> size(std::span<const std::byte> jpeg);
    /// `reduction` is 1, 2, 4 or 8; sizes are rounded up.
    Decoded decode(std::span<const std::byte> jpeg, int reduction);
    /// Quality 92; absent when it fails.
    std::optional<std::vector<std::byte>> encode(const Platform::Picture& picture);

private:
    void* decompressor_;
    void* compressor_ = nullptr;
};

} // namespace LinuxPlatform
