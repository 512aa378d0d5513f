#include "platform/qt/QtStatusBar.h"

#include "platform/qt/TrayStatusItem.h"

namespace QtPlatform {

std::unique_ptr<Platform::StatusItem> QtStatusBar::makeStatusItem() {
    return std::make_unique<TrayStatusItem>();
}

} // namespace QtPlatform
