#include "platform/linux/apps/SnapConfinement.h"

#include "platform/linux/apps/AppUnit.h"

#include <string_view>

namespace LinuxPlatform {
namespace {

/// From a label such as "snap.firefox.firefox (enforce)". Where the rules only complain, everything that the
/// program starts has its label.
std::optional<SnapApp> enforcedApp(std::string_view label) {
    constexpr std::string_view prefix = "snap.";
    const auto mode = label.find(" (enforce)");
    const auto dot = label.find('.', prefix.size());
    if (!label.starts_with(prefix) || mode == std::string_view::npos || dot == std::string_view::npos ||
        dot > mode) {
        return std::nullopt;
    }
    return SnapApp{std::string(label.substr(prefix.size(), dot - prefix.size())),
                   std::string(label.substr(dot + 1, mode - dot - 1))};
}

/// From a path such as "/snap/firefox/2987/usr/lib/firefox/firefox".
std::optional<std::string> snapOfPath(std::string_view path) {
    for (const std::string_view folder : {"/snap/", "/var/lib/snapd/snap/"}) {
        if (path.starts_with(folder)) {
            const auto rest = path.substr(folder.size());
            const auto end = rest.find('/');
            if (end != std::string_view::npos && end > 0) {
                return std::string(rest.substr(0, end));
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<SnapApp> SnapConfinement::app(std::uint32_t process) const {
    if (const auto enforced = enforcedApp(processes_.securityLabel(process))) {
        return enforced;
    }
    const auto executable = processes_.executable(process);
    const auto snap = executable ? snapOfPath(*executable) : std::nullopt;
    if (!snap) {
        return std::nullopt;
    }
    const auto unit = AppUnit::ofControlGroup(processes_.controlGroup(process));
    return unit && unit->snap && unit->snap->snap == *snap ? *unit->snap : SnapApp{*snap, *snap};
}

} // namespace LinuxPlatform
