#pragma once

#include "platform/StatusItem.h"

namespace QtPlatform {

/// The desktop's tray. Needs a QApplication.
class QtStatusBar : public Platform::StatusBar {
public:
    std::unique_ptr<Platform::StatusItem> makeStatusItem() override;
};

} // namespace QtPlatform
