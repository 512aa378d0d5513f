#pragma once

#include "core/Compatibility.h"
#include "platform/SystemVersion.h"
#include "platform/linux/windows/WindowSystem.h"

namespace LinuxPlatform {

/// The version of the system as far as Curtain is concerned: whether this session lets it hide apps.
class InterfaceLevel : public Platform::SystemVersion {
public:
    /// `windowSystem` outlives this object.
    explicit InterfaceLevel(WindowSystem& windowSystem) : windowSystem_(windowSystem) {}

    int majorVersion() override {
        return hidingObstacle() ? 0 : CurtainCore::CompatibilityChecker::minimumMajorVersion;
    }
    std::optional<Platform::HidingObstacle> hidingObstacle() override {
        return windowSystem_.hidingObstacle();
    }
    void switchExtensionOn() override { windowSystem_.switchExtensionOn(); }

private:
    WindowSystem& windowSystem_;
};

} // namespace LinuxPlatform
