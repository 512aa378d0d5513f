#include "Curtain/SettingsWindowController.h"

#include "Curtain/PlatformWording.h"

#include <string>

namespace Curtain {
namespace {

constexpr Platform::Size windowSize{440, 430};

} // namespace

SettingsWindowController::SettingsWindowController(Platform::Windows& windows, const UserLanguage& language)
    : windows_(windows),
      language_(language) {}

void SettingsWindowController::show() {
    if (!view_) {
        view_ = makeView();
    }
    if (window_ && window_->isVisible()) {
        // The user is in the middle of something.
        view_->refresh();
    } else {
        view_->willShow();
    }
    if (!window_) {
        window_ = windows_.makeWindow({"qrc:/Curtain/SettingsView.qml", view_}, windowSize, {});
        window_->center();
    }
    nameWindow();
    window_->makeKeyAndOrderFront();
    window_->orderFrontRegardless();
}

void SettingsWindowController::languageDidChange() {
    if (window_) {
        nameWindow();
    }
}

void SettingsWindowController::sessionDidAnswer() {
    if (view_) {
        view_->askSession();
    }
}

void SettingsWindowController::nameWindow() {
    const auto title = PlatformWording::string(CurtainCore::LocKey::settings, language_.code());
    window_->setTitle("Curtain — " + std::string(title));
}

} // namespace Curtain
