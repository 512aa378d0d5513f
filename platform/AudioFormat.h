#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Platform {

/// 32-bit float samples, the channels of a frame side by side.
struct AudioFormat {
    std::uint32_t channelCount = 0;
    /// Frames a second.
    double sampleRate = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// Samples that somebody else owns: they are good during the call that hands them over.
struct AudioPCMBuffer {
    AudioFormat format;
    /// `frameLength` frames; null where the samples are not float.
    const float* floatChannelData = nullptr;
    std::size_t frameLength = 0;
};

/// Why something could not be had, in words for the diagnostic output.
struct AudioError {
    std::string localizedDescription;
};

} // namespace Platform
