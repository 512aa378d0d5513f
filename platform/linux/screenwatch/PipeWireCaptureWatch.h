#pragma once

#include "platform/Log.h"
#include "platform/linux/screenwatch/CaptureWatch.h"
#include "platform/linux/screenwatch/Reopening.h"

#include <memory>
#include <optional>

namespace LinuxPlatform {

/// Finds screen casts among the streams of PipeWire (version 0.3 of its protocol), whose registry it follows.
/// A daemon that is not there casts nothing, unless that is to count as unknown, and is looked for at each
/// question. From the moment when one breaks off until there is one again or it has been missed for a minute,
/// and while one does not answer, nothing is known. The first question waits for what the daemon says, but
/// not for long. A cast that ends is remembered for a while, as it may pause.
class PipeWireCaptureWatch : public CaptureWatch {
public:
    /// What the absence of a daemon tells: where there is another road, that nobody takes this one.
    enum class WithoutDaemon { nobodyCasts, nothingIsKnown };

    /// Null when the library cannot be used at all.
    /// `log` outlives the watch.
    static std::unique_ptr<PipeWireCaptureWatch>
    open(Platform::Log& log, Reopening::Now now = &Reopening::Clock::now,
         WithoutDaemon withoutDaemon = WithoutDaemon::nobodyCasts);

    ~PipeWireCaptureWatch() override;
    PipeWireCaptureWatch(const PipeWireCaptureWatch&) = delete;
    PipeWireCaptureWatch& operator=(const PipeWireCaptureWatch&) = delete;

    std::optional<bool> isScreenCaptured() override;

    bool isConnected() const;

private:
    class Registry;

    PipeWireCaptureWatch() = default;

    std::unique_ptr<Registry> registry_;
};

} // namespace LinuxPlatform
