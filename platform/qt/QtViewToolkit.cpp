#include "platform/qt/QtPopover.h"
#include "platform/qt/QtWindows.h"
#include "platform/qt/ViewEngine.h"
#include "platform/qt/ViewToolkit.h"

#include <QtGlobal>

#include <utility>

namespace QtPlatform {
namespace {

class QtViewToolkit : public ViewToolkit {
public:
    void setReducedMotion(bool isReduced) override { engine_.style().setReducedMotion(isReduced); }

    std::unique_ptr<Platform::Popover> makePopover(const QtScreens& screens,
                                                   WindowManagerLink windowManager) override {
        return std::make_unique<QtPopover>(engine_, screens, std::move(windowManager));
    }

    std::unique_ptr<Platform::Windows> makeWindows(WindowManagerLink windowManager) override {
        return std::make_unique<QtWindows>(engine_, std::move(windowManager));
    }

private:
    ViewEngine engine_;
};

} // namespace
} // namespace QtPlatform

extern "C" Q_DECL_EXPORT QtPlatform::ViewToolkit* curtainMakeViewToolkit() {
    return std::make_unique<QtPlatform::QtViewToolkit>().release();
}
