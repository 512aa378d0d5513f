#pragma once

#include "platform/linux/screenwatch/CaptureWatch.h"
#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace LinuxPlatform {

/// Programs that do nothing else than to record the screen of a Wayland session. How they get at it, a
/// compositor tells nobody; but they take pictures for as long as they run.
class WaylandRecorderWatch : public CaptureWatch {
public:
    /// `socket` is that of the session's compositor.
    explicit WaylandRecorderWatch(std::filesystem::path socket, ProcessTable processes = ProcessTable());

    std::optional<bool> isScreenCaptured() override;

private:
    bool isOfThisSession(std::uint32_t process) const;

    std::filesystem::path socket_;
    ProcessTable processes_;
};

} // namespace LinuxPlatform
