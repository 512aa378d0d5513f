#pragma once

#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/system/GSettingsKey.h"

#include <string>

namespace LinuxPlatform {

/// A setting that hides the icons with one value and shows them with every other one.
class GSettingsIconSwitch {
public:
    GSettingsIconSwitch(GSettingsKey key, EarlierValue earlier, std::string hidden,
                        std::string shownByDefault);

    /// Absent when there is no such setting here.
    std::optional<bool> isHidden() const;
    const EarlierValue& earlier() const { return earlier_; }
    void hide();
    /// Whether the icons are shown now.
    bool giveBack();

private:
    bool giveBackEarlier();

    GSettingsKey key_;
    EarlierValue earlier_;
    std::string hidden_;
    std::string shownByDefault_;
};

} // namespace LinuxPlatform
