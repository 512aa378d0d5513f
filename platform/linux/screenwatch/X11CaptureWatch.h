#pragma once

#include "platform/Log.h"
#include "platform/linux/screenwatch/CaptureWatch.h"
#include "platform/linux/screenwatch/Reopening.h"
#include "platform/linux/screenwatch/X11ScreenReaders.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace LinuxPlatform {

/// Watches the X clients that read the screen, for as long as it lives: when the X server stops telling of
/// them it is asked to begin again. What a capture does meanwhile is not known, nor is it at once afterwards,
/// since captures are known by what they do for a while.
class X11CaptureWatch : public CaptureWatch {
public:
    /// Never null: a server that cannot be reached yet is asked again. `log` outlives the watch.
    static std::unique_ptr<X11CaptureWatch> open(Platform::Log& log,
                                                 Reopening::Now now = &Reopening::Clock::now);

    std::optional<bool> isScreenCaptured() override;

    /// How often an answer had to wait for the X server so far.
    std::uint64_t roundTrips() const { return readers_ ? readers_->roundTrips() : 0; }
    /// How often it woke up by itself.
    std::uint64_t wakeUps() const { return readers_ ? readers_->wakeUps() : 0; }
    bool isAboutToWakeUp() const { return readers_ && readers_->isAboutToWakeUp(); }

private:
    X11CaptureWatch(Platform::Log& log, Reopening::Now now);

    void lose();
    void openReaders();
    void openAgain();
    bool isNew() const;

    Platform::Log& log_;
    Reopening::Now now_;
    Reopening reopening_;
    std::unique_ptr<X11ScreenReaders> readers_;
    std::optional<Reopening::Clock::time_point> openedAgain_;
};

} // namespace LinuxPlatform
