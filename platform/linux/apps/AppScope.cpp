#include "platform/linux/apps/AppScope.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace LinuxPlatform {

std::optional<AppUnit> AppScope::ledBy(std::uint32_t process) const {
    const auto group = processes_.controlGroup(process);
    auto unit = AppUnit::ofControlGroup(group);
    if (!unit || unit->process == process) {
        return unit;
    }
    const bool isAnother = unit->process && processes_.controlGroup(*unit->process) == group;
    const auto parent = processes_.parent(process);
    const bool isStartedByAnother = parent && processes_.controlGroup(*parent) == group;
    return isAnother || isStartedByAnother ? std::nullopt : std::move(unit);
}

std::uint32_t AppScope::leader(const AppUnit& unit, const std::vector<std::uint32_t>& processes) const {
    if (unit.process && std::ranges::find(processes, *unit.process) != processes.end()) {
        return *unit.process;
    }
    return *std::ranges::min_element(processes, {}, [this](std::uint32_t process) {
        return processes_.startTime(process).value_or(std::numeric_limits<std::uint64_t>::max());
    });
}

} // namespace LinuxPlatform
