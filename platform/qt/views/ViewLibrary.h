#pragma once

#include "platform/Log.h"
#include "platform/qt/OwnLibrary.h"
#include "platform/qt/views/ViewToolkit.h"

#include <memory>
#include <string>

namespace QtPlatform {

/// The library with the view toolkit, which is mapped when the first view is about to be shown. Main thread
/// only.
class ViewLibrary {
public:
    static constexpr const char* fileName = "curtain-views.so";

    /// `log` outlives this object.
    ViewLibrary(const std::string& path, Platform::Log& log);

    /// Loads it if need be. Null when that failed, which the log then tells once.
    ViewToolkit* toolkit();
    /// For the toolkit when it is there.
    void setAppearance(const Appearance& appearance);

private:
    Platform::Log& log_;
    OwnLibrary library_;
    bool isTried_ = false;
    Appearance appearance_;
    std::unique_ptr<ViewToolkit> toolkit_;
};

} // namespace QtPlatform
