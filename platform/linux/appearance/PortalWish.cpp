#include "platform/linux/appearance/PortalWish.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace LinuxPlatform {

PortalWish::PortalWish(const QDBusConnection& bus, const std::vector<Source>& sources, Handler onChange)
    : onChange_(std::move(onChange)) {
    for (const auto& source : sources) {
        auto& isAsked = asked_.emplace_back(false);
        settings_.emplace_back(bus, source.group, source.key,
                               [this, &isAsked, asks = source.asks](const QVariant& value) {
                                   isAsked = asks(value);
                                   report();
                               });
    }
}

std::function<bool(const QVariant&)> PortalWish::isSwitched(bool on) {
    return [on](const QVariant& value) {
        return value.metaType() == QMetaType::fromType<bool>() && value.toBool() == on;
    };
}

void PortalWish::report() {
    onChange_(std::ranges::any_of(asked_, std::identity()));
}

} // namespace LinuxPlatform
