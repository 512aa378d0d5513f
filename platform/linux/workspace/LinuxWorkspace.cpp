#include "platform/linux/workspace/LinuxWorkspace.h"

#include "platform/linux/system/AsciiCase.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

using Platform::ActivationPolicy;

class LinuxRunningApplication : public Platform::RunningApplication {
public:
    LinuxRunningApplication(std::weak_ptr<AppInstances> instances, AppInstanceKey key)
        : instances_(std::move(instances)),
          key_(std::move(key)) {}

    std::optional<std::string> bundleIdentifier() const override { return key_.bundleIdentifier; }

    std::optional<std::string> localizedName() const override {
        std::optional<std::string> name;
        withInstance([&](const AppInstance& instance) { name = instance.localizedName; });
        return name;
    }

    ActivationPolicy activationPolicy() const override {
        auto policy = ActivationPolicy::prohibited;
        // Curtain lives in the tray: its own windows come and go, and make no app of it that could be chosen.
        const bool isThisProgram = key_.process == static_cast<std::uint64_t>(getpid());
        withInstance([&](const AppInstance& instance) {
            policy = instance.isInTaskList && !isThisProgram ? ActivationPolicy::regular
                                                             : ActivationPolicy::accessory;
        });
        return policy;
    }

    bool isHidden() const override {
        bool isHidden = true;
        withInstance([&](const AppInstance& instance) { isHidden = instance.visibleWindows.empty(); });
        return isHidden;
    }

    void hide() override {
        if (const auto instances = instances_.lock()) {
            instances->hide(key_);
        }
    }

    void unhide() override {
        if (const auto instances = instances_.lock()) {
            instances->unhide(key_);
        }
    }

    void activate(Platform::ActivationOptions /*options*/) override {
        if (const auto instances = instances_.lock()) {
            instances->activate(key_);
        }
    }

private:
    template <class Use>
    void withInstance(const Use& use) const {
        const auto instances = instances_.lock();
        const auto* const instance = instances ? instances->find(key_) : nullptr;
        if (instance != nullptr) {
            use(*instance);
        }
    }

    std::weak_ptr<AppInstances> instances_;
    AppInstanceKey key_;
};

} // namespace

LinuxWorkspace::LinuxWorkspace(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                               ScopedApps& scopedApps, Platform::MainQueue& mainQueue,
                               std::string thisProgram, HiddenWindowsRecord hiddenWindows)
    : thisProgram_(std::move(thisProgram)),
      windowSystem_(windowSystem),
      entries_(entries),
      instances_(std::make_shared<AppInstances>(windowSystem, identity, entries, scopedApps, mainQueue,
                                                std::move(hiddenWindows))),
      windowEvents_(windowSystem.addEventHandler(
          [this](WindowEvent event, const Window& window) { handleEvent(event, window); })) {}

Platform::RunningApplications LinuxWorkspace::runningApplications() {
    Platform::RunningApplications applications;
    for (const auto& instance : instances_->all()) {
        if (instance.key.bundleIdentifier != thisProgram_) {
            applications.push_back(handleFor(instance.key));
        }
    }
    return applications;
}

bool LinuxWorkspace::knowsEveryWindow() {
    return windowSystem_.knowsEveryWindow();
}

Platform::RunningApplications
LinuxWorkspace::runningApplicationsWithBundleIdentifier(const std::string& bundleID) {
    Platform::RunningApplications applications;
    if (bundleID == thisProgram_) {
        return applications;
    }
    for (const auto& key : instances_->withBundleIdentifier(bundleID)) {
        applications.push_back(handleFor(key));
    }
    return applications;
}

Platform::Subscription LinuxWorkspace::addObserver(Platform::WorkspaceNotification notification,
                                                   Observer observer) {
    return observers_[notification].add(std::move(observer));
}

std::optional<std::string>
LinuxWorkspace::urlForApplicationWithBundleIdentifier(const std::string& bundleID) {
    const auto* const entry = entries_.withBundleIdentifier(bundleID);
    return entry != nullptr ? std::optional(entry->path) : std::nullopt;
}

std::optional<std::string> LinuxWorkspace::urlForApplicationToOpen(const std::string& url) {
    const auto scheme = asciiLowerCase(std::string_view(url).substr(0, url.find(':')));
    const auto& all = entries_.all();
    const auto found = std::ranges::find_if(all, [&](const DesktopEntry& entry) {
        return entry.shouldShow && std::ranges::find(entry.urlSchemes, scheme) != entry.urlSchemes.end();
    });
    return found == all.end() ? std::nullopt : std::optional(found->path);
}

std::optional<Platform::Image> LinuxWorkspace::iconForFile(const std::string& path) {
    const auto* const entry = entries_.withPath(path);
    if (entry == nullptr || entry->icon.empty()) {
        return std::nullopt;
    }
    Platform::Image image;
    image.source = entry->icon;
    return image;
}

std::vector<WindowId> LinuxWorkspace::windowsOf(const std::string& bundleID) {
    return bundleID == thisProgram_ ? std::vector<WindowId>() : instances_->windowsOf(bundleID);
}

std::optional<std::string> LinuxWorkspace::appOf(WindowId window) {
    const auto key = owning(window);
    return key ? std::optional(key->bundleIdentifier) : std::nullopt;
}

void LinuxWorkspace::announceVisible() {
    // Copied, since whoever is told may hide them.
    std::vector<AppInstanceKey> visible;
    for (const auto& instance : instances_->all()) {
        if (!instance.visibleWindows.empty() && instance.key.bundleIdentifier != thisProgram_) {
            visible.push_back(instance.key);
        }
    }
    for (const auto& key : visible) {
        observers_[Platform::WorkspaceNotification::didActivateApplication].tell(handleFor(key));
    }
}

void LinuxWorkspace::handleEvent(WindowEvent event, const Window& window) {
    const auto key = owning(window.id);
    if (!key) {
        return;
    }
    const auto notification = event == WindowEvent::opened
                                  ? Platform::WorkspaceNotification::didLaunchApplication
                                  : Platform::WorkspaceNotification::didActivateApplication;
    observers_[notification].tell(handleFor(*key));
}

std::optional<AppInstanceKey> LinuxWorkspace::owning(WindowId window) {
    const auto key = instances_->owning(window);
    return key && key->bundleIdentifier != thisProgram_ ? key : std::nullopt;
}

std::shared_ptr<Platform::RunningApplication> LinuxWorkspace::handleFor(const AppInstanceKey& key) const {
    return std::make_shared<LinuxRunningApplication>(instances_, key);
}

} // namespace LinuxPlatform
