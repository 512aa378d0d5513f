#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// What a panel needs that this program has to draw itself.
struct SavePanelLook {
    /// The address of the description of its view. Its model has the properties that the view names.
    std::string view;
    std::string cancelTitle;
    /// Said of a name that a file has already.
    std::string nameInUse;
    /// Of all texts, such as "hi".
    std::string lang;
    bool isRightToLeft = false;
};

struct SavePanelOptions {
    std::string proposedName;
    /// Absent for the panel's own choice, which is also taken where the folder does not exist.
    std::optional<std::string> folder;
    /// The only kind of file that can be saved, such as "image/jpeg".
    std::string mimeType;
    /// What the panel is for, in a word or two.
    std::string title;
    SavePanelLook look;
};

/// The desktop's dialog for saving a file. Main thread only.
class SavePanel {
public:
    virtual ~SavePanel() = default;

    /// Opens the dialog and returns; `completion` receives the chosen path, absent when the user cancelled.
    /// One at a time: a second call takes the open one over, with its own name and completion, and brings it
    /// to the front. The first completion then receives no path.
    virtual void open(const SavePanelOptions& options,
                      std::function<void(const std::optional<std::string>& path)> completion) = 0;
};

} // namespace Platform
