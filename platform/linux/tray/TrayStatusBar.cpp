#include "platform/linux/tray/TrayStatusBar.h"

#include "platform/linux/tray/TrayStatusItem.h"

#include <utility>

namespace LinuxPlatform {

TrayStatusBar::TrayStatusBar(Platform::MainQueue& queue, Platform::Log& log, TrayToolkit toolkit)
    : queue_(queue),
      log_(log),
      toolkit_(std::move(toolkit)),
      x11_(X11Connection::open()) {}

std::unique_ptr<Platform::StatusItem> TrayStatusBar::makeStatusItem() {
    return std::make_unique<TrayStatusItem>(x11_.get(), queue_, log_, toolkit_);
}

} // namespace LinuxPlatform
