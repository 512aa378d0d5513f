#pragma once

#include "Curtain/HotkeyManager.h"
#include "Curtain/Notifier.h"
#include "platform/Keyboard.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/Subscription.h"

#include <optional>

namespace Curtain {

/// Says where the program is to be found: in the panel, or nowhere. Main thread only.
class HomeNotice {
public:
    /// All of them outlive the notice.
    struct Services {
        Platform::StatusItem& statusItem;
        Notifier& notifier;
        const HotkeyManager& hotkeys;
        Platform::Keyboard& keyboard;
        Platform::MainQueue& mainQueue;
    };

    explicit HomeNotice(const Services& services) : services_(services) {}

    void tell();
    /// Once the panel is there; it may start with the session.
    void tellWithPanel();
    /// Nobody waits for the panel any more.
    void cancel();

private:
    Services services_;
    /// While it waits for a panel.
    std::optional<Platform::Lifetime> waiting_;
    Platform::Subscription panelObserver_;
};

} // namespace Curtain
