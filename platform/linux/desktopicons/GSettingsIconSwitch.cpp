#include "platform/linux/desktopicons/GSettingsIconSwitch.h"

#include <utility>

namespace LinuxPlatform {
namespace {

/// No value of a setting looks like this.
constexpr auto nothingChosen = "default";

} // namespace

GSettingsIconSwitch::GSettingsIconSwitch(GSettingsKey key, EarlierValue earlier, std::string hidden,
                                         std::string shownByDefault)
    : key_(std::move(key)),
      earlier_(std::move(earlier)),
      hidden_(std::move(hidden)),
      shownByDefault_(std::move(shownByDefault)) {}

std::optional<bool> GSettingsIconSwitch::isHidden() const {
    const auto value = key_.value();
    return value ? std::optional(*value == hidden_) : std::nullopt;
}

void GSettingsIconSwitch::hide() {
    if (earlier_.isOfThisSession() && isHidden() == true) {
        // What is there now is ours, and on its way.
        return;
    }
    earlier_.keep(key_.chosenValue().value_or(nothingChosen));
    if (!key_.write(hidden_)) {
        earlier_.forget();
    }
}

bool GSettingsIconSwitch::giveBack() {
    const bool isDone = giveBackEarlier() || key_.write(shownByDefault_);
    if (isDone) {
        earlier_.forget();
    }
    return isDone;
}

bool GSettingsIconSwitch::giveBackEarlier() {
    const auto earlier = earlier_.get();
    if (!earlier || *earlier == hidden_) {
        return false;
    }
    const bool isDone = *earlier == nothingChosen ? key_.reset() : key_.write(*earlier);
    return isDone && isHidden() == false;
}

} // namespace LinuxPlatform
