#pragma once

#include "Curtain/HotkeyManager.h"
#include "Curtain/SystemAppHiding.h"
#include "Curtain/WorkspaceObserver.h"
#include "core/HideEngine.h"
#include "core/PreferencesStore.h"
#include "hotkeys/KeyboardShortcuts.h"
#include "platform/Lifetime.h"
#include "platform/Platform.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

/// The one controller: owns every long-lived object, switches privacy mode and shows its state. Main thread
/// only.
class AppDelegate {
public:
    /// `platform` outlives the controller.
    explicit AppDelegate(Platform::Platform& platform);

    /// Start-up; nothing opens.
    void applicationDidFinishLaunching();

private:
    void statusItemClicked(const std::optional<Platform::Event>& event);
    void showStatusMenu();
    void toggleModeFromHotkey();
    void appAppeared(const std::string& bundleID);
    std::string currentLang() const;
    void updateIcon();
    std::optional<Platform::Image> statusImage(const std::string& name) const;
    Platform::Image symbolImage(const std::string& name) const;
    std::vector<std::string> targetBundleIDs() const;

    Platform::Platform& platform_;
    std::unique_ptr<Platform::StatusItem> statusItem_;
    SystemAppHiding hiding_;
    CurtainCore::HideEngine engine_;
    WorkspaceObserver workspaceObserver_;
    CurtainCore::PreferencesStore store_;
    KeyboardShortcuts::KeyboardShortcuts shortcuts_;
    HotkeyManager hotkeys_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
