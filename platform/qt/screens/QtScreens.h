#pragma once

#include "platform/Screens.h"
#include "platform/qt/screens/WindowManagerLink.h"

class QScreen;

namespace QtPlatform {

class QtScreens : public Platform::Screens {
public:
    ///
    explicit QtScreens(WindowManagerLink windowManager);

    std::vector<Platform::Screen> screens() override;
    std::optional<Platform::Screen> main() override;
    std::optional<Platform::Screen> at(const Platform::Point& pixel) override;
    std::optional<Platform::Point> mouseLocation() override;

    /// The part of the screen that no panel keeps for itself, in points.
    QRectF visibleFrame(const QScreen& screen) const;
    /// The same, without the edges where panels may be of which nothing is known.
    QRectF freePart(const QScreen& screen) const;

private:
    Platform::Screen describe(const QScreen& screen) const;

    WindowManagerLink windowManager_;
};

} // namespace QtPlatform
