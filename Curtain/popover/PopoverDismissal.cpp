#include "Curtain/popover/PopoverDismissal.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace Curtain {
namespace {

namespace EventType = Platform::EventType;

/// What a click opens is open by then.
constexpr Platform::MainQueue::Seconds outsideClickDelay{0.12};

constexpr std::uint64_t outsideClickEvents = 1U << EventType::leftMouseDown | 1U << EventType::rightMouseDown;
constexpr std::uint64_t keyEvents = 1U << EventType::keyDown;

} // namespace

void PopoverDismissal::start() {
    clickMonitor_ = services_.monitors.addGlobalMonitor(
        outsideClickEvents,
        lifetime_.weak([this](const Platform::Event& /*event*/) { handleOutsideClick(); }));
    escMonitor_ = services_.monitors.addLocalMonitor(keyEvents, [this](const Platform::Event& event) {
        const bool isForPopover = event.keyCode == Platform::KeyCode::escape && services_.popover.isShown();
        if (isForPopover) {
            services_.popover.close();
        }
        return isForPopover;
    });
}

/// Whatever is no part of the visible frame belongs to the menu bar, the status item itself included.
bool PopoverDismissal::isInMenuBar(const Platform::Point& location) const {
    const auto screens = services_.screens.screens();
    const auto found =
        std::ranges::find_if(screens, [&](const auto& screen) { return screen.frame.contains(location); });
    const auto screen = found != screens.end() ? std::optional(*found) : services_.screens.main();
    return screen && !screen->visibleFrame.contains(location);
}

void PopoverDismissal::handleOutsideClick() {
    if (!services_.popover.isShown() || isDialogOpen()) {
        return;
    }
    if (const auto location = services_.screens.mouseLocation(); location && isInMenuBar(*location)) {
        return;
    }
    services_.mainQueue.asyncAfter(outsideClickDelay, lifetime_.weak([this] { closeUnlessPanelIsUsed(); }));
}

void PopoverDismissal::closeUnlessPanelIsUsed() {
    if (!services_.popover.isShown()) {
        return;
    }
    auto owner = services_.menuBar.owningApplication();
    if (!owner) {
        owner = services_.menuBar.frontmostApplication();
    }
    if (owner != Platform::MenuBar::controlCenter) {
        services_.popover.close();
    }
}

} // namespace Curtain
