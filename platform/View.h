#pragma once

#include <memory>
#include <string>

class QObject;

namespace Platform {

/// One of the program's views, for a popover or a window to show.
struct View {
    /// The address of the view's description, such as "qrc:/Curtain/SettingsView.qml".
    std::string source;
    /// What the view reads and calls; the view receives it as its property `model`. Lives at least as long as
    /// the view is shown.
    std::shared_ptr<QObject> model;
};

} // namespace Platform
