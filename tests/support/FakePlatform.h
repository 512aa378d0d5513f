#pragma once

#include "platform/Platform.h"
#include "platform/Subscribers.h"
#include "tests/support/FakeAppShield.h"
#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeDoNotDisturb.h"
#include "tests/support/FakeHotKeyService.h"
#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeKeyboard.h"
#include "tests/support/FakeLocale.h"
#include "tests/support/FakeLoginItem.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeScreenWatcherProbe.h"
#include "tests/support/FakeSessionNote.h"
#include "tests/support/FakeShell.h"
#include "tests/support/FakeSystemShortcuts.h"
#include "tests/support/FakeSystemVersion.h"
#include "tests/support/FakeUrlOpener.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/FakeUserNotificationCenter.h"
#include "tests/support/FakeUuidSource.h"
#include "tests/support/FakeWindows.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

class FakeApplication : public Platform::Application {
public:
    explicit FakeApplication(std::vector<std::string>& events) : events_(events) {}

    std::optional<Platform::ActivationPolicy> policy;
    bool isTerminated = false;
    bool isRelaunched = false;
    std::optional<std::string> identifier = "com.curtain.Curtain";

    void setActivationPolicy(Platform::ActivationPolicy newPolicy) override {
        policy = newPolicy;
        events_.emplace_back("activation policy");
    }

    void activate(bool ignoringOtherApps) override {
        events_.emplace_back(ignoringOtherApps ? "activate ignoring other apps" : "activate");
    }

    std::optional<std::string> bundleIdentifier() const override { return identifier; }

    void terminate() override { isTerminated = true; }
    void relaunch() override { isRelaunched = true; }

private:
    std::vector<std::string>& events_;
};

class FakeResources : public Platform::Resources {
public:
    std::set<std::string> files{"open.pdf", "close.pdf", "alert.pdf"};
    std::set<std::string> symbols{"eye", "eye.slash", "exclamationmark.triangle"};
    std::optional<std::string> version = "1.2.3";

    std::optional<std::string> pathForResource(const std::string& name,
                                               const std::string& extension) override {
        const auto file = name + "." + extension;
        return files.contains(file) ? std::optional("/resources/" + file) : std::nullopt;
    }

    std::optional<std::string> shortVersion() override { return version; }

    std::optional<std::string> pathForSystemSymbol(const std::string& name) override {
        return symbols.contains(name) ? std::optional("/symbols/" + name) : std::nullopt;
    }
};

class FakeWallClock : public Platform::WallClock {
public:
    std::chrono::system_clock::time_point time;

    std::chrono::system_clock::time_point now() override { return time; }
    std::string localTimestamp(std::chrono::system_clock::time_point moment) override {
        return std::to_string(moment.time_since_epoch() / std::chrono::seconds(1));
    }
};

class FakeStatusBar : public Platform::StatusBar {
public:
    explicit FakeStatusBar(std::vector<std::string>& events) : events_(events) {}

    std::vector<Platform::Image> images;
    std::vector<Platform::Menu> menus;
    int items = 0;
    std::string toolTip;
    std::optional<Platform::Rect> frame;
    /// What a panel gets to see that draws the menu itself.
    std::function<Platform::Menu()> menu;
    /// What a click with the middle button does.
    std::function<void()> secondaryAction;
    std::function<void()> onImage;

    /// Does to the item what its user did; only what the item asked for arrives.
    void click(const std::optional<Platform::Event>& event) {
        if (!event || (eventMask_ >> event->type & 1U) != 0) {
            action_(event);
        }
    }

    /// Takes the panel away, or brings one.
    void setHasPanel(bool hasPanel) {
        hasPanel_ = hasPanel;
        panelObservers_.tell();
    }

    std::unique_ptr<Platform::StatusItem> makeStatusItem() override {
        events_.emplace_back("status item");
        return std::make_unique<Item>(*this);
    }

private:
    class Item : public Platform::StatusItem {
    public:
        explicit Item(FakeStatusBar& bar) : bar_(bar) { ++bar_.items; }
        ~Item() override { --bar_.items; }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;

        void setImage(const Platform::Image& image) override {
            bar_.images.push_back(image);
            bar_.events_.emplace_back("status image");
            if (bar_.onImage) {
                bar_.onImage();
            }
        }

        void setToolTip(const std::string& text) override { bar_.toolTip = text; }

        void setAction(std::uint64_t eventMask, Action action) override {
            bar_.eventMask_ = eventMask;
            bar_.action_ = std::move(action);
        }

        void setSecondaryAction(std::function<void()> action) override {
            bar_.secondaryAction = std::move(action);
        }

        void setMenu(std::function<Platform::Menu()> menu) override { bar_.menu = std::move(menu); }
        std::optional<Platform::Rect> frame() const override { return bar_.frame; }
        bool hasPanel() const override { return bar_.hasPanel_; }
        Platform::Subscription addPanelObserver(std::function<void()> handler) override {
            return bar_.panelObservers_.add(std::move(handler));
        }
        void popUpMenu(const Platform::Menu& menu) override { bar_.menus.push_back(menu); }

    private:
        FakeStatusBar& bar_;
    };

    std::vector<std::string>& events_;
    bool hasPanel_ = true;
    Platform::Subscribers<> panelObservers_;
    std::uint64_t eventMask_ = 0;
    Platform::StatusItem::Action action_;
};

/// A platform of fakes, handed over as a whole; the references stay good for as long as `platform` lives.
struct FakePlatform {
    /// What happened to whom, in order.
    std::vector<std::string> events;
    Platform::Platform platform;
    RecordingLog& log = add<RecordingLog>(platform.log);
    HandDrivenQueue& mainQueue = add<HandDrivenQueue>(platform.mainQueue);
    HandDrivenWorkQueues& workQueues = add<HandDrivenWorkQueues>(platform.workQueues);
    FakeWallClock& wallClock = add<FakeWallClock>(platform.wallClock);
    FakeUuidSource& uuids = add<FakeUuidSource>(platform.uuids);
    MemoryUserDefaults& userDefaults = add<MemoryUserDefaults>(platform.userDefaults);
    FakeSessionNote& sessionNote = add<FakeSessionNote>(platform.sessionNote);
    FakeLocale& locale = add<FakeLocale>(platform.locale);
    FakeResources& resources = add<FakeResources>(platform.resources);
    FakeInstallation& fileManager = add<FakeInstallation>(platform.fileManager);
    FakeUserFolders& userFolders = add<FakeUserFolders>(platform.userFolders);
    FakeProcessRunner& processRunner = add<FakeProcessRunner>(platform.processRunner);
    FakeInstallation& bundles = add<FakeInstallation>(platform.bundles);
    FakeApplication& application = add<FakeApplication>(platform.application, events);
    FakeLoginItem& loginItem = add<FakeLoginItem>(platform.loginItem);
    FakeWorkspace& workspace = add<FakeWorkspace>(platform.workspace, events);
    FakeAppShield& appShield = add<FakeAppShield>(platform.appShield);
    FakeSystemVersion& systemVersion = add<FakeSystemVersion>(platform.systemVersion);
    FakeHotKeyService& hotKeyService = add<FakeHotKeyService>(platform.hotKeyService, events);
    FakeKeyboard& keyboard = add<FakeKeyboard>(platform.keyboard);
    FakeSystemShortcuts& systemShortcuts = add<FakeSystemShortcuts>(platform.systemShortcuts);
    FakeStatusBar& statusBar = add<FakeStatusBar>(platform.statusBar, events);
    FakeScreenWatcherProbe& screenWatcherProbe = add<FakeScreenWatcherProbe>(platform.screenWatcherProbe);
    FakeUserNotificationCenter& userNotificationCenter =
        add<FakeUserNotificationCenter>(platform.userNotificationCenter, events);
    FakeDoNotDisturb& doNotDisturb = add<FakeDoNotDisturb>(platform.doNotDisturb, events);
    FakeScreens& screens = add<FakeScreens>(platform.screens);
    FakeEventMonitors& eventMonitors = add<FakeEventMonitors>(platform.eventMonitors, events);
    FakeDepartures& departures = add<FakeDepartures>(platform.departures);
    FakeMenuBar& menuBar = add<FakeMenuBar>(platform.menuBar);
    FakePopover& popover = add<FakePopover>(platform.popover, events);
    FakeWindows& windows = add<FakeWindows>(platform.windows, events);
    FakePasteboard& pasteboard = add<FakePasteboard>(platform.pasteboard);
    FakeSavePanel& savePanel = add<FakeSavePanel>(platform.savePanel, events);
    FakeUrlOpener& urlOpener = add<FakeUrlOpener>(platform.urlOpener);
    FakeAudioServices& audioServices = add<FakeAudioServices>(platform.audioServices);
    FakeCaptureServices& captureServices = add<FakeCaptureServices>(platform.captureServices);
    FakeMediaAuthorization& mediaAuthorization = add<FakeMediaAuthorization>(platform.mediaAuthorization);

private:
    template <class Fake, class Port, class... Arguments>
    static Fake& add(std::unique_ptr<Port>& place, Arguments&&... arguments) {
        auto fake = std::make_unique<Fake>(std::forward<Arguments>(arguments)...);
        auto& reference = *fake;
        place = std::move(fake);
        return reference;
    }
};

} // namespace TestSupport
