#include "Curtain/AppDelegate.h"

#include <utility>

namespace Curtain {
namespace {

/// An app that returns is given this long to finish coming to the front before it is hidden again.
constexpr Platform::MainQueue::Seconds rehideDelay{0.2};
constexpr double statusImageSize = 18;

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
    updateIcon();
    workspaceObserver_.onAppAppeared = [this](const std::string& bundleID) { appAppeared(bundleID); };
    workspaceObserver_.start();
    hotkeys_.onToggle = [this] { toggleModeFromHotkey(); };
    hotkeys_.start();
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
