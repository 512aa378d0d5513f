#pragma once

#include "platform/linux/apps/SnapApp.h"
#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>

namespace LinuxPlatform {

/// Tells programs out of snaps by the marks that snapd gives them: the security label, the folder of their
/// files, and the control group.
class SnapConfinement {
public:
    explicit SnapConfinement(const ProcessTable& processes) : processes_(processes) {}

    /// Absent also for a program of the system that was started from within a snap without confinement.
    std::optional<SnapApp> app(std::uint32_t process) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
