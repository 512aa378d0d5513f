#include "Curtain/popover/ReadinessPopover.h"

#include "Curtain/MeetingReadinessView.h"

#include <algorithm>
#include <optional>

namespace Curtain {
namespace {

/// An open popover is never longer behind what nobody announces: an app that its user hides, a file that
/// comes.
constexpr Platform::MainQueue::Seconds liveInterval{1.0};

constexpr double width = 700;
constexpr double maximumHeight = 618;
constexpr double screenMargin = 8;

/// The one that holds the status item, where its place is known.
std::optional<Platform::Screen> screenOf(const Platform::StatusItem& statusItem, Platform::Screens& screens) {
    if (const auto frame = statusItem.frame()) {
        if (const auto screen = screens.at({frame->x, frame->y})) {
            return screen;
        }
    }
    return screens.main();
}

} // namespace

ReadinessPopover::~ReadinessPopover() {
    services_.popover.setOnDidClose(nullptr);
    services_.popover.close();
    // It reads objects that end soon.
    services_.popover.setContent({});
}

void ReadinessPopover::start() {
    services_.popover.setOnDidClose(lifetime_.weak([this] { didClose(); }));
}

void ReadinessPopover::open(Platform::StatusItem& statusItem) {
    services_.coordinator.refresh();
    showNewView();
    services_.popover.setContentSize({width, heightAt(statusItem)});
    services_.popover.show(statusItem);
    if (services_.popover.isShown()) {
        liveRefresh_ =
            services_.mainQueue.repeating(liveInterval, [this] { services_.coordinator.refresh(); });
    } else {
        // Nothing would ever close, and so end what it shows.
        didClose();
    }
}

void ReadinessPopover::renewView() {
    if (isShown()) {
        showNewView();
    }
}

void ReadinessPopover::showNewView() {
    const auto view = makeView();
    view_ = view;
    services_.popover.setContent({"qrc:/Curtain/MeetingReadinessView.qml", view});
}

double ReadinessPopover::heightAt(const Platform::StatusItem& statusItem) const {
    const auto screen = screenOf(statusItem, services_.screens);
    return screen ? std::min(maximumHeight, screen->visibleFrame.height - screenMargin) : maximumHeight;
}

void ReadinessPopover::tellOfPhoto(PhotoNews news) {
    if (const auto view = view_.lock()) {
        view->tellOfPhoto(news);
    }
}

void ReadinessPopover::didClose() {
    liveRefresh_ = {};
    services_.checks.end();
    if (const auto view = view_.lock()) {
        view->rest();
    }
}

} // namespace Curtain
