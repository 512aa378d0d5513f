#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace LinuxPlatform {

/// Cuts a stream of interleaved samples, however it arrives, into buffers of the same number of frames.
/// Allocates only when it is made.
class TapBuffers {
public:
    TapBuffers(std::size_t framesPerBuffer, std::size_t channels)
        : channels_(channels),
          samplesPerBuffer_(std::max<std::size_t>(framesPerBuffer, 1) * channels) {
        pending_.reserve(samplesPerBuffer_);
    }

    /// Calls `deliver(const float* samples, std::size_t frames)` for every buffer that is full. No samples
    /// stand for silence, as after a gap.
    template <class Deliver>
    void push(const float* samples, std::size_t frames, const Deliver& deliver) {
        auto left = frames * channels_;
        while (left > 0) {
            if (pending_.empty() && samples != nullptr && left >= samplesPerBuffer_) {
                deliver(samples, samplesPerBuffer_ / channels_);
                samples += samplesPerBuffer_;
                left -= samplesPerBuffer_;
                continue;
            }
            const auto count = std::min(left, samplesPerBuffer_ - pending_.size());
            if (samples != nullptr) {
                pending_.insert(pending_.end(), samples, samples + count);
                samples += count;
            } else {
                pending_.insert(pending_.end(), count, 0.0F);
            }
            left -= count;
            if (pending_.size() == samplesPerBuffer_) {
                deliver(pending_.data(), samplesPerBuffer_ / channels_);
                pending_.clear();
            }
        }
    }

    /// Delivers a buffer of nothing but silence, after the one that had begun.
    template <class Deliver>
    void pushSilence(const Deliver& deliver) {
        const auto frames = [this](std::size_t samples) { return channels_ > 0 ? samples / channels_ : 0; };
        if (!pending_.empty()) {
            push(nullptr, frames(samplesPerBuffer_ - pending_.size()), deliver);
        }
        push(nullptr, frames(samplesPerBuffer_), deliver);
    }

private:
    std::size_t channels_;
    std::size_t samplesPerBuffer_;
    std::vector<float> pending_;
};

} // namespace LinuxPlatform
