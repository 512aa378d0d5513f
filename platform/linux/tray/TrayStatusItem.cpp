#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/linux/tray/StatusNotifierItem.h"
#include "platform/linux/tray/StatusNotifierProtocol.h"
#include "platform/linux/tray/XembedIcon.h"
#include "platform/linux/windows/gnome/GnomeShellProtocol.h"

#include <utility>

namespace LinuxPlatform {
namespace {

/// Whoever answers the bus does so within milliseconds; one who does not must not keep the icon away.
constexpr Platform::MainQueue::Seconds hostDeadline{0.25};
/// Panels often start later than the programs that want to stand in them.
constexpr Platform::MainQueue::Seconds trayDeadline{15};

} // namespace

TrayStatusItem::TrayStatusItem(X11Connection* x11, Platform::MainQueue& queue, Platform::Log& log,
                               TrayToolkit toolkit)
    : x11_(x11),
      log_(log),
      toolkit_(std::move(toolkit)),
      bus_(QDBusConnection::sessionBus()),
      tint_(toolkit_.textColor),
      hosts_(bus_, StatusNotifierProtocol::watcherService, [this] { takeBestPlace(); }),
      extension_(bus_, GnomeShellProtocol::extensionService, [this] { takeBestPlace(); }) {
    if (x11_ != nullptr) {
        xembed_.emplace(*x11_, [this] { takeBestPlace(); });
    }
    queue.asyncAfter(hostDeadline, lifetime_.weak([this] {
        isHostAwaited_ = false;
        takeBestPlace();
    }));
    queue.asyncAfter(trayDeadline, lifetime_.weak([this] {
        if (!hasBeenShown_) {
            log_.writeLine(
                "Curtain: no panel with a tray has appeared, so there is no icon yet; the shortcut "
                "works without it");
        }
    }));
}

void TrayStatusItem::setImage(const Platform::Image& image) {
    image_ = image;
    if (icon_) {
        icon_->setImage(image);
    } else {
        takeBestPlace();
    }
}

void TrayStatusItem::setToolTip(const std::string& text) {
    toolTip_ = QString::fromStdString(text);
    if (icon_) {
        icon_->setToolTip(toolTip_);
    }
}

void TrayStatusItem::setAction(std::uint64_t eventMask, Action action) {
    eventMask_ = eventMask;
    action_ = std::move(action);
}

void TrayStatusItem::setSecondaryAction(std::function<void()> action) {
    secondaryAction_ = std::move(action);
}

void TrayStatusItem::setMenu(std::function<Platform::Menu()> menu) {
    menu_ = std::move(menu);
}

std::optional<Platform::Rect> TrayStatusItem::frame() const {
    if (const auto geometry = icon_ ? icon_->geometry() : std::nullopt) {
        return Platform::Rect{static_cast<double>(geometry->x()), static_cast<double>(geometry->y()),
                              static_cast<double>(geometry->width()),
                              static_cast<double>(geometry->height())};
    }
    const auto place = lastClick_.isNull() ? lastPointer_ : std::optional(lastClick_.topLeft());
    if (!place) {
        return std::nullopt;
    }
    return Platform::Rect{static_cast<double>(place->x()), static_cast<double>(place->y()), 0, 0};
}

Platform::Subscription TrayStatusItem::addPanelObserver(std::function<void()> handler) {
    return panelObservers_.add(std::move(handler));
}

void TrayStatusItem::popUpMenu(const Platform::Menu& menu) {
    if (menuReceiver_ != nullptr) {
        *menuReceiver_ = menu;
    } else {
        toolkit_.popUpMenu(menu, lastClick_);
    }
}

TrayStatusItem::Place TrayStatusItem::bestPlace() const {
    if (!hosts_.watcher().isEmpty()) {
        return {hosts_.watcher()};
    }
    // An icon that moved at once would flicker, so the answer is waited for while it is likely to come.
    const auto isPossible = [this](const auto& hosts) { return !hosts.isKnown() && isHostAwaited_; };
    if (isPossible(hosts_) || (extension_.watcher().isEmpty() && isPossible(extension_))) {
        return {};
    }
    if (!extension_.watcher().isEmpty()) {
        return {extension_.watcher(), true};
    }
    return {{}, false, xembed_ ? xembed_->manager() : xcb_window_t{XCB_WINDOW_NONE}};
}

void TrayStatusItem::takeBestPlace() {
    auto place = bestPlace();
    if (!image_ || place == place_) {
        return;
    }
    const bool hadPanel = hasPanel();
    place_ = std::move(place);
    icon_.reset();
    if (hasPanel()) {
        stand();
    }
    if (hasPanel() != hadPanel) {
        panelObservers_.tell();
    }
}

void TrayStatusItem::stand() {
    hasBeenShown_ = true;
    TrayIconContent content{*image_, toolTip_,
                            [this](const auto& event, const auto& where) { clicked(event, where); },
                            [this] { return menu_ ? std::optional(menu_()) : std::nullopt; },
                            [this] { return menuOfRightClick(); }};
    if (place_.watcher.isEmpty()) {
        icon_ = std::make_unique<XembedIcon>(*x11_, place_.manager, std::move(content), toolkit_, tint_);
    } else {
        followColorScheme();
        // The extension answers nobody but the owner of Curtain's name.
        const auto registrar = place_.isExtension ? std::optional(bus_) : std::nullopt;
        icon_ = std::make_unique<StatusNotifierItem>(place_.watcher, registrar, std::move(content), toolkit_,
                                                     tint_);
    }
}

void TrayStatusItem::clicked(const Platform::Event& event, const QRect& place) {
    if (!place.isNull()) {
        const bool isBelieved = place_.isExtension || toolkit_.isPlausible(place.topLeft());
        lastClick_ = isBelieved ? place : QRect();
    }
    if (place.isNull() || lastClick_.isNull()) {
        lastPointer_ = toolkit_.pointer();
    }
    if (event.type == Platform::EventType::otherMouseUp && secondaryAction_) {
        secondaryAction_();
    } else if ((eventMask_ >> event.type & 1U) != 0 && action_) {
        action_(event);
    }
}

std::optional<Platform::Menu> TrayStatusItem::menuOfRightClick() {
    std::optional<Platform::Menu> menu;
    menuReceiver_ = &menu;
    clicked({Platform::EventType::rightMouseUp, 0}, {});
    menuReceiver_ = nullptr;
    return menu;
}

void TrayStatusItem::followColorScheme() {
    if (!colorScheme_) {
        colorScheme_.emplace(bus_, [this](std::optional<ColorScheme> scheme) {
            tint_.setColorScheme(scheme);
            if (icon_) {
                icon_->updateTint();
            }
        });
    }
}

} // namespace LinuxPlatform
