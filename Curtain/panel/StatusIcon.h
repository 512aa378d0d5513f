#pragma once

#include "Curtain/HidingWatch.h"
#include "Curtain/HotkeyManager.h"
#include "Curtain/UserLanguage.h"
#include "Curtain/privacy/PrivacyMode.h"
#include "platform/Bundle.h"
#include "platform/HotKeyService.h"
#include "platform/Image.h"
#include "platform/Keyboard.h"
#include "platform/StatusItem.h"

#include <optional>
#include <string>

namespace Curtain {

/// What the status item shows and says of privacy mode. Main thread only.
class StatusIcon {
public:
    /// All of them outlive the icon.
    struct Services {
        Platform::StatusItem& item;
        const PrivacyMode& privacy;
        const HidingWatch& hidingWatch;
        const HotkeyManager& hotkeys;
        const UserLanguage& language;
        Platform::Resources& resources;
        Platform::HotKeyService& hotKeyService;
        Platform::Keyboard& keyboard;
    };

    explicit StatusIcon(const Services& services) : services_(services) {}

    void update();
    void updateToolTip();

private:
    std::string toolTip() const;
    std::optional<Platform::Image> statusImage(const std::string& name) const;
    Platform::Image symbolImage(const std::string& name) const;

    Services services_;
};

} // namespace Curtain
