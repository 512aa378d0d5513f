#pragma once

#include "platform/Menu.h"

#include <QRect>

#include <memory>

class QMenu;

namespace QtPlatform {

/// Shows menus that stand by themselves, one at a time. Needs a QApplication.
class PopUpMenu {
public:
    PopUpMenu();
    ~PopUpMenu();
    PopUpMenu(const PopUpMenu&) = delete;
    PopUpMenu& operator=(const PopUpMenu&) = delete;

    /// `place` is what the menu belongs to, in pixels of the screen; the menu opens at the pointer when it is
    /// null.
    void show(const Platform::Menu& menu, const QRect& place);

private:
    std::unique_ptr<QMenu> menu_;
};

} // namespace QtPlatform
