#pragma once

#include "core/AppHiding.h"
#include "platform/Workspace.h"

namespace Curtain {

/// Hides and shows apps through their running instances; asks the workspace afresh on every call.
class SystemAppHiding : public CurtainCore::AppHiding {
public:
    /// `workspace` outlives this object.
    explicit SystemAppHiding(Platform::Workspace& workspace);

    bool isRunning(const std::string& bundleID) override;
    /// Of the first instance; the others are not consulted.
    std::optional<bool> isHidden(const std::string& bundleID) override;
    void hide(const std::string& bundleID) override;
    /// Also brings the app to the front.
    void unhide(const std::string& bundleID) override;

private:
    Platform::Workspace& workspace_;
};

} // namespace Curtain
