#include "platform/linux/camera/JpegTables.h"

#include "platform/linux/camera/JpegCodec.h"

#include <cstdint>
#include <optional>

namespace LinuxPlatform {
namespace {

constexpr std::uint8_t startOfImage = 0xD8;
constexpr std::uint8_t defineHuffmanTables = 0xC4;
constexpr std::uint8_t startOfScan = 0xDA;

std::uint8_t byteAt(std::span<const std::byte> data, std::size_t at) {
    return std::to_integer<std::uint8_t>(data[at]);
}

/// The segments in front of the first scan, one after another. `use` takes a segment's kind, where it begins
/// and its length with its marker, and goes on with true.
template <class Use>
void forEachSegment(std::span<const std::byte> jpeg, const Use& use) {
    if (jpeg.size() < 2 || byteAt(jpeg, 0) != 0xFF || byteAt(jpeg, 1) != startOfImage) {
        return;
    }
    std::size_t at = 2;
    while (jpeg.size() - at >= 4 && byteAt(jpeg, at) == 0xFF) {
        const auto kind = byteAt(jpeg, at + 1);
        if (kind == 0xFF) {
            // A marker may have bytes to fill up in front.
            ++at;
            continue;
        }
        const auto length = std::size_t{byteAt(jpeg, at + 2)} * 256 + byteAt(jpeg, at + 3) + 2;
        if (length > jpeg.size() - at || !use(kind, at, length) || kind == startOfScan) {
            return;
        }
        at += length;
    }
}

/// Those of an encoder that does not make tables of its own.
std::vector<std::byte> standardTables() {
    Platform::Picture picture;
    picture.width = 1;
    picture.height = 1;
    picture.pixels.resize(4);
    const auto jpeg = JpegCodec().encode(picture);
    std::vector<std::byte> tables;
    if (jpeg) {
        forEachSegment(*jpeg, [&](std::uint8_t kind, std::size_t at, std::size_t length) {
            if (kind == defineHuffmanTables) {
                const auto segment = std::span(*jpeg).subspan(at, length);
                tables.insert(tables.end(), segment.begin(), segment.end());
            }
            return true;
        });
    }
    return tables;
}

} // namespace

std::vector<std::byte> withHuffmanTables(std::span<const std::byte> jpeg) {
    bool hasTables = false;
    std::optional<std::size_t> scan;
    forEachSegment(jpeg, [&](std::uint8_t kind, std::size_t at, std::size_t) {
        hasTables = hasTables || kind == defineHuffmanTables;
        if (kind == startOfScan) {
            scan = at;
        }
        return true;
    });
    std::vector<std::byte> file(jpeg.begin(), jpeg.end());
    if (scan && !hasTables) {
        const auto tables = standardTables();
        file.insert(file.begin() + static_cast<std::ptrdiff_t>(*scan), tables.begin(), tables.end());
    }
    return file;
}

} // namespace LinuxPlatform
