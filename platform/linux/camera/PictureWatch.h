#pragma once

#include "platform/linux/system/GrowingPause.h"

#include <chrono>
#include <utility>

namespace LinuxPlatform {

/// Tells when an open camera has brought no picture for too long. One that was silent when it was opened last
/// time may take longer the next time, since some are slow to begin.
class PictureWatch {
public:
    using Clock = std::chrono::steady_clock;
    using Time = std::chrono::milliseconds;

    /// For so long, a picture that stands still is taken for one that is still true.
    static constexpr Time longestSilence{3000};
    /// Session managers put a camera to rest, and close its device, when nobody has used it for five seconds.
    /// Where that is what it needs, it must be left alone for longer.
    static constexpr Time shortPause{500};
    static constexpr Time longPause{6000};

    void onOpened(Clock::time_point now) {
        since_ = now;
        hasPicture_ = false;
    }
    void onPicture(Clock::time_point now) {
        since_ = now;
        hasPicture_ = true;
        firstPicture_.reset();
        pause_ = shortPause;
    }

    /// How long there may still be silence; nothing or less when it has lasted too long.
    Time left(Clock::time_point now) const {
        const auto limit = hasPicture_ ? longestSilence : firstPicture_.present();
        return std::chrono::ceil<Time>(since_ + limit - now);
    }
    /// Gives the camera longer for its first picture, up to a limit.
    void giveMoreTime() { firstPicture_.next(); }
    /// How long to leave the silent camera alone before it is opened again.
    Time pause() {
        giveMoreTime();
        return std::exchange(pause_, longPause);
    }

private:
    Clock::time_point since_;
    bool hasPicture_ = false;
    GrowingPause firstPicture_{longestSilence, longestSilence * 4};
    Time pause_ = shortPause;
};

} // namespace LinuxPlatform
