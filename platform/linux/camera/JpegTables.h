#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// A JPEG file as it is; with the standard Huffman tables (ITU-T T.81, Annex K.3) before its first scan where
/// it has none. Cameras that deliver one picture after another leave them out, and not every program knows
/// them by heart.
std::vector<std::byte> withHuffmanTables(std::span<const std::byte> jpeg);

} // namespace LinuxPlatform
