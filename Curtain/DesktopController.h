#pragma once

#include "platform/ProcessRunner.h"

namespace Curtain {

/// Hides and shows the icons on the desktop through the file manager's own setting, which is read afresh each
/// time.
class DesktopController {
public:
    /// `runner` outlives the controller.
    explicit DesktopController(Platform::ProcessRunner& runner);

    /// Blocks until the tool has answered; an answer that says nothing means shown.
    bool iconsHidden() const;
    /// Blocks. Restarts the file manager even when the setting is as asked already.
    void setIconsHidden(bool hidden) const;

private:
    Platform::ProcessRunner& runner_;
};

} // namespace Curtain
