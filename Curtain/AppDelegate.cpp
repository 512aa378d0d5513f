#include "Curtain/AppDelegate.h"

#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <cstdint>
#include <utility>

namespace Curtain {
namespace {

/// An app that returns is given this long to finish coming to the front before it is hidden again.
constexpr Platform::MainQueue::Seconds rehideDelay{0.2};
constexpr double statusImageSize = 18;
constexpr std::uint64_t statusItemEvents =
    1U << Platform::EventType::leftMouseUp | 1U << Platform::EventType::rightMouseUp;

} // namespace

AppDelegate::AppDelegate(Platform::Platform& platform)
    : platform_(platform),
      hiding_(*platform.workspace),
      engine_(hiding_),
      workspaceObserver_(*platform.workspace),
      store_(*platform.userDefaults),
      shortcuts_(*platform.userDefaults, *platform.hotKeyService, *platform.log),
      hotkeys_(shortcuts_) {}

void AppDelegate::applicationDidFinishLaunching() {
    platform_.application->setActivationPolicy(Platform::ActivationPolicy::accessory);
    statusItem_ = platform_.statusBar->makeStatusItem();
    statusItem_->setAction(statusItemEvents, [this](const auto& event) { statusItemClicked(event); });
    updateIcon();
    workspaceObserver_.onAppAppeared = [this](const std::string& bundleID) { appAppeared(bundleID); };
    workspaceObserver_.start();
    hotkeys_.onToggle = [this] { toggleModeFromHotkey(); };
    hotkeys_.start();
}

void AppDelegate::statusItemClicked(const std::optional<Platform::Event>& event) {
    const bool isForMenu = event && (event->type == Platform::EventType::rightMouseUp ||
                                     (event->modifierFlags & Platform::EventModifier::control) != 0);
    if (isForMenu) {
        showStatusMenu();
    }
}

void AppDelegate::showStatusMenu() {
    using CurtainCore::LocKey;
    const auto lang = currentLang();
    const auto text = [&](LocKey key) { return std::string(PlatformWording::string(key, lang)); };
    const Platform::MenuItem separator;
    // What opens a window comes alive with that window.
    statusItem_->popUpMenu({{{"Curtain " + platform_.resources->shortVersion().value_or("?"), nullptr},
                             separator,
                             {text(LocKey::open), nullptr},
                             {text(LocKey::settings), nullptr},
                             separator,
                             {text(LocKey::quit), [this] { platform_.application->terminate(); }}},
                            CurtainCore::Localizer::isRightToLeft(lang)});
}

void AppDelegate::toggleModeFromHotkey() {
    if (engine_.isActive()) {
        engine_.deactivate();
    } else {
        engine_.activate(targetBundleIDs());
    }
    updateIcon();
}

void AppDelegate::appAppeared(const std::string& bundleID) {
    platform_.mainQueue->asyncAfter(rehideDelay,
                                    lifetime_.weak([this, bundleID] { engine_.reapply(bundleID); }));
}

std::string AppDelegate::currentLang() const {
    const auto system = platform_.locale->preferredLanguageCode();
    return std::string(CurtainCore::Localizer::resolve(store_.load().language, system));
}

void AppDelegate::updateIcon() {
    const bool isActive = engine_.isActive();
    const auto image = statusImage(isActive ? "close" : "open");
    statusItem_->setImage(image ? *image : symbolImage(isActive ? "eye.slash" : "eye"));
}

std::optional<Platform::Image> AppDelegate::statusImage(const std::string& name) const {
    const auto path = platform_.resources->pathForResource(name, "pdf");
    if (!path) {
        return std::nullopt;
    }
    return Platform::Image{*path, statusImageSize, statusImageSize, true, {}};
}

Platform::Image AppDelegate::symbolImage(const std::string& name) const {
    return {platform_.resources->pathForSystemSymbol(name).value_or(std::string{}), 0, 0, true, "Curtain"};
}

std::vector<std::string> AppDelegate::targetBundleIDs() const {
    std::vector<std::string> identifiers;
    for (auto& target : store_.load().targetApps) {
        identifiers.push_back(std::move(target.bundleID));
    }
    return identifiers;
}

} // namespace Curtain
