#pragma once

#include "platform/Menu.h"
#include "platform/qt/views/ViewEngine.h"

#include <QRect>

#include <memory>

class QQuickWindow;

namespace QtPlatform {

/// Shows menus that stand by themselves, one at a time.
class PopUpMenu {
public:
    /// `engine` outlives the menu.
    explicit PopUpMenu(ViewEngine& engine);
    ~PopUpMenu();
    PopUpMenu(const PopUpMenu&) = delete;
    PopUpMenu& operator=(const PopUpMenu&) = delete;

    /// `place` is what the menu belongs to, in pixels of the screen; the menu opens at the pointer when it is
    /// null.
    void show(const Platform::Menu& menu, const QRect& place);

private:
    ViewEngine& engine_;
    std::unique_ptr<QQuickWindow> window_;
};

} // namespace QtPlatform
