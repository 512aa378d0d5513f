#pragma once

#include "platform/EventMonitors.h"
#include "platform/Geometry.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/MenuBar.h"
#include "platform/Popover.h"
#include "platform/Screens.h"
#include "platform/Subscription.h"

#include <functional>

namespace Curtain {

/// Closes the popover on Escape and when its user clicks beside it. Main thread only.
class PopoverDismissal {
public:
    /// All of them outlive this object.
    struct Services {
        Platform::Popover& popover;
        Platform::EventMonitors& monitors;
        Platform::Screens& screens;
        Platform::MenuBar& menuBar;
        Platform::MainQueue& mainQueue;
    };

    explicit PopoverDismissal(const Services& services) : services_(services) {}

    /// Whether a click beside the popover may be meant for something else than what lies behind it.
    std::function<bool()> isDialogOpen;

    void start();

private:
    bool isInMenuBar(const Platform::Point& location) const;
    void handleOutsideClick();
    void closeUnlessPanelIsUsed();

    Services services_;
    Platform::Subscription escMonitor_;
    Platform::Subscription clickMonitor_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
