#include "Curtain/CompatibilityProbe.h"

#include <string>
#include <string_view>

namespace Curtain {
namespace {

/// Stands for the meeting service on the web, which any browser will do for.
constexpr std::string_view browserBundleID = "com.google.Chrome";
constexpr auto webAddress = "https:";

} // namespace

Platform::Subscription CompatibilityProbe::prepare() const {
    services_.capture.prepare();
    return services_.audio.prepare();
}

CurtainCore::CompatibilityResult CompatibilityProbe::run() const {
    auto& workspace = services_.workspace;
    const auto isInstalled = [&](std::string_view bundleID) {
        return workspace.urlForApplicationWithBundleIdentifier(std::string(bundleID)).has_value() ||
               (bundleID == browserBundleID && workspace.urlForApplicationToOpen(webAddress).has_value());
    };
    return CurtainCore::CompatibilityChecker::evaluate({
        .osMajorVersion = services_.system.majorVersion(),
        .hasCamera = !services_.capture.devices().empty(),
        .hasMicrophone = services_.audio.hasInputDevice(),
        .videoAppNames = CurtainCore::installedVideoAppNames(isInstalled),
    });
}

std::optional<Platform::HidingObstacle> CompatibilityProbe::hidingObstacle() const {
    return services_.system.hidingObstacle();
}

} // namespace Curtain
