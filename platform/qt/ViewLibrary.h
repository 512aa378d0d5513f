#pragma once

#include "platform/Log.h"
#include "platform/qt/ViewToolkit.h"

#include <memory>
#include <optional>
#include <string>

namespace QtPlatform {

/// The library with the view toolkit, which is mapped when the first view is about to be shown and then
/// stays. Until then its file is only held open: what is loaded is what was installed when the program
/// started, even if another version has taken its place. Main thread only.
class ViewLibrary {
public:
    /// `log` outlives this object.
    ViewLibrary(const std::string& path, Platform::Log& log);
    ~ViewLibrary();
    ViewLibrary(const ViewLibrary&) = delete;
    ViewLibrary& operator=(const ViewLibrary&) = delete;

    /// Beside this program.
    static std::string standardPath();
    /// Why there is nothing to load, in one sentence.
    static std::optional<std::string> problemWith(const std::string& path);

    /// Loads it if need be. Null when that failed, which the log then tells once.
    ViewToolkit* toolkit();
    /// For the toolkit when it is there.
    void setAppearance(const Appearance& appearance);

private:
    MakeViewToolkit* load();

    Platform::Log& log_;
    int file_;
    bool isTried_ = false;
    Appearance appearance_;
    std::unique_ptr<ViewToolkit> toolkit_;
};

} // namespace QtPlatform
