#pragma once

#include "platform/Menu.h"
#include "platform/Popover.h"
#include "platform/Windows.h"
#include "platform/qt/items/Appearance.h"
#include "platform/qt/screens/QtScreens.h"
#include "platform/qt/screens/WindowManagerLink.h"

#include <QRect>

#include <memory>

namespace QtPlatform {

/// What shows views. It stands in a library of its own, since it brings ten times what the icon in the tray
/// needs. Outlives what it makes. Main thread only.
class ViewToolkit {
public:
    virtual ~ViewToolkit() = default;

    /// Applies to what is shown and to what will be. The popover stays light.
    virtual void setAppearance(const Appearance& appearance) = 0;
    /// `screens` outlives the popover and the windows.
    virtual std::unique_ptr<Platform::Popover> makePopover(const QtScreens& screens,
                                                           WindowManagerLink windowManager) = 0;
    virtual std::unique_ptr<Platform::Windows> makeWindows(const QtScreens& screens,
                                                           WindowManagerLink windowManager) = 0;
    /// Opens a menu beside a place, in pixels of the screen; at the pointer when that is null. It takes the
    /// place of an earlier one.
    virtual void popUpMenu(const Platform::Menu& menu, const QRect& place) = 0;
};

/// The library's only entry, whose caller owns the result.
using MakeViewToolkit = ViewToolkit*();
constexpr const char* nameOfMakeViewToolkit = "curtainMakeViewToolkit";

} // namespace QtPlatform
