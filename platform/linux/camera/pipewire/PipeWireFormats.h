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

/// What a camera offers that Curtain reads.
enum class ReadableFormats : std::uint8_t { none, gray, color };

/// The formats that Curtain takes, as PipeWire wants them described, best first.
class PipeWireFormats {
public:
    enum class Layouts : std::uint8_t { all, color };

    explicit PipeWireFormats(Layouts layouts = Layouts::all);
    PipeWireFormats(const PipeWireFormats&) = delete;
    PipeWireFormats& operator=(const PipeWireFormats&) = delete;

    /// Good for as long as this object.
    std::vector<const spa_pod*>& offers() { return offers_; }

    /// Whether a camera that offers `format` can deliver one of these.
    bool matches(const spa_pod* format) const;

    /// Absent for a format that was not offered.
    static std::optional<VideoFormat> parse(const spa_pod* format);

private:
    std::array<std::uint8_t, 8192> memory_{};
    std::vector<const spa_pod*> offers_;
};

} // namespace LinuxPlatform
