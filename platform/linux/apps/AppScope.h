#pragma once

#include "platform/linux/apps/AppUnit.h"
#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Which process a systemd unit was made for. The others in it may be anything that this one started, as the
/// programs in a terminal are.
class AppScope {
public:
    explicit AppScope(const ProcessTable& processes) : processes_(processes) {}

    /// The unit of the app whose leader the process is.
    std::optional<AppUnit> ledBy(std::uint32_t process) const;
    /// Of the processes in a unit, which are at least one: the one that the unit names, or the oldest.
    std::uint32_t leader(const AppUnit& unit, const std::vector<std::uint32_t>& processes) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
