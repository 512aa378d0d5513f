#pragma once

#include "platform/Application.h"

namespace QtPlatform {

/// What the activation policy means for a Qt application; it must exist already.
class QtApplication : public Platform::Application {
public:
    void setActivationPolicy(Platform::ActivationPolicy policy) override;
    void activate(bool ignoringOtherApps) override;
    std::optional<std::string> bundleIdentifier() const override;
    void terminate() override;
};

} // namespace QtPlatform
