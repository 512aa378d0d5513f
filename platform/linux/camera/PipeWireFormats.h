#pragma once

#include "platform/linux/camera/VideoFrame.h"

#include <spa/pod/builder.h>
#include <spa/pod/pod.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// The formats that Curtain takes, as PipeWire wants them described, best first.
class PipeWireFormats {
public:
    PipeWireFormats();
    PipeWireFormats(const PipeWireFormats&) = delete;
    PipeWireFormats& operator=(const PipeWireFormats&) = delete;

    /// Good for as long as this object.
    std::vector<const spa_pod*>& offers() { return offers_; }

    /// Absent for a format that was not offered.
    static std::optional<VideoFormat> parse(const spa_pod* format);

private:
    std::array<std::uint8_t, 8192> memory_{};
    std::vector<const spa_pod*> offers_;
};

} // namespace LinuxPlatform
