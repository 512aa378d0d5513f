#pragma once

#include "platform/linux/system/GrowingPause.h"

#include <chrono>
#include <optional>

namespace LinuxPlatform {

/// Tells when an open camera has brought no picture for too long. One that was silent when it was opened last
/// time may take longer the next time, since some are slow to begin.
class PictureWatch {
public:
    using Clock = std::chrono::steady_clock;
    using Time = std::chrono::milliseconds;

    /// For so long, a picture that stands still is taken for one that is still true.
    static constexpr Time longestSilence{3000};

    void onOpened(Clock::time_point now) {
        since_ = now;
        hasPicture_ = false;
    }
    void onPicture(Clock::time_point now) {
        since_ = now;
        hasPicture_ = true;
        firstPicture_.reset();
        pause_.reset();
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
        return pause_.next();
    }

private:
    Clock::time_point since_;
    bool hasPicture_ = false;
    GrowingPause firstPicture_{longestSilence, longestSilence * 4};
    GrowingPause pause_{Time(500), Time(8000)};
};

} // namespace LinuxPlatform
