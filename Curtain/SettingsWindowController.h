#pragma once

#include "Curtain/SettingsView.h"
#include "Curtain/UserLanguage.h"
#include "platform/Windows.h"

#include <functional>
#include <memory>

namespace Curtain {

/// The settings window. Main thread only.
class SettingsWindowController {
public:
    /// Both outlive the controller.
    SettingsWindowController(Platform::Windows& windows, const UserLanguage& language);

    /// Makes what is shown, once.
    std::function<std::shared_ptr<SettingsView>()> makeView;

    /// Makes the window the first time, and brings it to the front every time.
    void show();
    void languageDidChange();
    /// The session may answer differently from before.
    void sessionDidAnswer();

private:
    void nameWindow();

    Platform::Windows& windows_;
    const UserLanguage& language_;
    std::shared_ptr<SettingsView> view_;
    std::unique_ptr<Platform::Window> window_;
};

} // namespace Curtain
