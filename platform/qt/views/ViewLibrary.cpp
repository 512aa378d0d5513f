#include "platform/qt/views/ViewLibrary.h"

#include <dlfcn.h>

namespace QtPlatform {

ViewLibrary::ViewLibrary(const std::string& path, Platform::Log& log) : log_(log), library_(path) {}

ViewToolkit* ViewLibrary::toolkit() {
    if (!isTried_) {
        isTried_ = true;
        if (auto* const make = library_.entry<MakeViewToolkit>(nameOfMakeViewToolkit)) {
            toolkit_.reset(make());
            toolkit_->setAppearance(appearance_);
        } else {
            log_.writeLine("Curtain: its windows cannot be shown: " + std::string(dlerror()));
        }
    }
    return toolkit_.get();
}

void ViewLibrary::setAppearance(const Appearance& appearance) {
    appearance_ = appearance;
    if (toolkit_) {
        toolkit_->setAppearance(appearance);
    }
}

} // namespace QtPlatform
