#include "tests/fuzz/FuzzCheck.h"
#include "tests/fuzz/SlowRawVideo.h"

#include "platform/linux/camera/RawVideo.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using LinuxPlatform::PixelLayout;
using LinuxPlatform::VideoFrame;

constexpr std::size_t headerSize = 10;
/// What the fast conversion may lose by its steps of 1/64.
constexpr int mostDifference = 3;

/// Planes of the sizes that the input tells, each in memory of its own.
class Input {
public:
    Input(const std::uint8_t* bytes, std::size_t size) {
        frame_.format.layout = static_cast<PixelLayout>(bytes[0] % 10);
        frame_.format.width = bytes[1] % 40;
        frame_.format.height = bytes[2] % 40;
        frame_.format.range = static_cast<LinuxPlatform::ColorRange>(bytes[3] & 1U);
        frame_.format.matrix = static_cast<LinuxPlatform::ColorMatrix>((bytes[3] >> 1U) & 1U);
        reduction_ = 1 << (bytes[3] >> 6U);
        const int stride = bytes[9] - 8;
        std::size_t used = headerSize;
        for (std::size_t plane = 0; plane < memory_.size(); ++plane) {
            const auto wanted =
                plane == 0 && bytes[8] == 0 ? size : std::size_t{bytes[4 + plane]} * (bytes[8] + 1U);
            const auto taken = std::min(wanted, size - used);
            const auto* const first = reinterpret_cast<const std::byte*>(bytes) + used;
            memory_[plane].assign(first, first + taken);
            used += taken;
            const bool isHalf = plane > 0 && bytes[8] % 2 == 0;
            frame_.planes[plane] = {memory_[plane], isHalf ? stride / 2 : stride};
        }
    }

    const VideoFrame& frame() const { return frame_; }
    int reduction() const { return reduction_; }

private:
    std::array<std::vector<std::byte>, 3> memory_;
    VideoFrame frame_;
    int reduction_ = 1;
};

bool isNear(const std::vector<std::uint8_t>& expected, const Platform::Picture& picture) {
    if (expected.size() != picture.pixels.size()) {
        return false;
    }
    for (std::size_t at = 0; at < expected.size(); ++at) {
        if (std::abs(expected[at] - std::to_integer<int>(picture.pixels[at])) > mostDifference) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < headerSize) {
        return 0;
    }
    const Input input(bytes, size);
    const auto picture = LinuxPlatform::pictureOfRawFrame(input.frame(), input.reduction());
    const auto expected = Fuzz::slowPicture(input.frame(), input.reduction());
    Fuzz::check((picture != nullptr) == expected.has_value(),
                "a frame is refused where it is too small only");
    Fuzz::check(!picture || isNear(*expected, *picture), "the picture is that of the slow conversion");
    return 0;
}
