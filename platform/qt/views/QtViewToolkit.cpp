#include "platform/qt/views/PopUpMenu.h"
#include "platform/qt/views/QtPopover.h"
#include "platform/qt/views/QtWindows.h"
#include "platform/qt/views/ViewEngine.h"
#include "platform/qt/views/ViewToolkit.h"

#include <QtGlobal>

#include <utility>

namespace QtPlatform {
namespace {

class QtViewToolkit : public ViewToolkit {
public:
    void setAppearance(const Appearance& appearance) override {
        windowEngine_.style().setAppearance(appearance);
        auto light = appearance;
        light.isDark = false;
        popoverEngine_.style().setAppearance(light);
    }

    std::unique_ptr<Platform::Popover> makePopover(const QtScreens& screens,
                                                   WindowManagerLink windowManager) override {
        return std::make_unique<QtPopover>(popoverEngine_, screens, std::move(windowManager));
    }

    std::unique_ptr<Platform::Windows> makeWindows(const QtScreens& screens,
                                                   WindowManagerLink windowManager) override {
        return std::make_unique<QtWindows>(windowEngine_, screens, std::move(windowManager));
    }

    void popUpMenu(const Platform::Menu& menu, const QRect& place) override { menu_.show(menu, place); }

private:
    // One for each appearance, since the colours of an engine are those of all its views.
    ViewEngine popoverEngine_;
    ViewEngine windowEngine_;
    PopUpMenu menu_{windowEngine_};
};

} // namespace
} // namespace QtPlatform

extern "C" Q_DECL_EXPORT QtPlatform::ViewToolkit* curtainMakeViewToolkit() {
    return std::make_unique<QtPlatform::QtViewToolkit>().release();
}
