#pragma once

#include "platform/Application.h"

namespace QtPlatform {

/// What the activation policy means for a Qt application; it must exist already.
class QtApplication : public Platform::Application {
public:
    /// What the event loop returns where the program is to be started anew.
    static constexpr int relaunchStatus = 1000;

    void setActivationPolicy(Platform::ActivationPolicy policy) override;
    void activate(bool ignoringOtherApps) override;
    std::optional<std::string> bundleIdentifier() const override;
    void terminate() override;
    void relaunch() override;
};

} // namespace QtPlatform
