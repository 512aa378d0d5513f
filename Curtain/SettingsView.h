#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/SettingsModel.h"
#include "hotkeys/KeyboardShortcuts.h"
#include "platform/CaptureServices.h"
#include "platform/Keyboard.h"
#include "platform/SystemShortcuts.h"
#include "platform/UrlOpener.h"

#include <QObject>

namespace Curtain {

/// The content of the settings window with its three tabs, for SettingsView.qml. Main thread only.
class SettingsView : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the view.
    struct Services {
        SettingsModel& model;
        const AppCatalog& catalog;
        KeyboardShortcuts::KeyboardShortcuts& shortcuts;
        Platform::CaptureServices& capture;
        Platform::UrlOpener& urlOpener;
        Platform::Keyboard& keyboard;
        Platform::SystemShortcuts& systemShortcuts;
    };

    explicit SettingsView(const Services& services);

    /// To be called on every showing of the window.
    void willShow();
};

} // namespace Curtain
