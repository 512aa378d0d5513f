#include "platform/qt/QtStatusBar.h"

#include "platform/qt/ImageRendering.h"

#include <QApplication>
#include <QPalette>
#include <QSystemTrayIcon>

namespace QtPlatform {
namespace {

class TrayStatusItem : public Platform::StatusItem {
public:
    TrayStatusItem() { tray_.setToolTip(QStringLiteral("Curtain")); }

    void setImage(const Platform::Image& image) override {
        tray_.setIcon(renderIcon(image, QApplication::palette().color(QPalette::WindowText)));
        tray_.show();
    }

private:
    QSystemTrayIcon tray_;
};

} // namespace

std::unique_ptr<Platform::StatusItem> QtStatusBar::makeStatusItem() {
    return std::make_unique<TrayStatusItem>();
}

} // namespace QtPlatform
