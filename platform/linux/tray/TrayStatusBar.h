#pragma once

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/linux/tray/TrayIcon.h"
#include "platform/linux/x11/X11Connection.h"

#include <memory>

namespace LinuxPlatform {

/// The desktop's tray. Needs a QGuiApplication, and outlives its items.
class TrayStatusBar : public Platform::StatusBar {
public:
    TrayStatusBar(Platform::MainQueue& queue, Platform::Log& log, TrayToolkit toolkit);

    std::unique_ptr<Platform::StatusItem> makeStatusItem() override;

private:
    Platform::MainQueue& queue_;
    Platform::Log& log_;
    TrayToolkit toolkit_;
    /// A connection of its own: others select the events of the root window on theirs.
    std::unique_ptr<X11Connection> x11_;
};

} // namespace LinuxPlatform
