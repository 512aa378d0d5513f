#include "Curtain/panel/HomeNotice.h"

namespace Curtain {
namespace {

/// A panel that starts with the session is there by then.
constexpr Platform::MainQueue::Seconds panelDeadline{10.0};

} // namespace

void HomeNotice::tell() {
    const auto shortcut = services_.hotkeys.shortcut();
    services_.notifier.notifyHome(services_.statusItem.hasPanel(),
                                  shortcut ? shortcut->description(services_.keyboard) : "");
}

void HomeNotice::tellWithPanel() {
    if (services_.statusItem.hasPanel()) {
        tell();
        return;
    }
    waiting_.emplace();
    const auto tellOnce = waiting_->weak([this] {
        cancel();
        tell();
    });
    panelObserver_ =
        services_.statusItem.addPanelObserver([this, tellOnce] { services_.mainQueue.async(tellOnce); });
    services_.mainQueue.asyncAfter(panelDeadline, tellOnce);
}

void HomeNotice::cancel() {
    waiting_.reset();
    panelObserver_ = {};
}

} // namespace Curtain
