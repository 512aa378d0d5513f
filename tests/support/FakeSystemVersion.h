#pragma once

#include "platform/SystemVersion.h"

namespace TestSupport {

class FakeSystemVersion : public Platform::SystemVersion {
public:
    int version = 14;
    std::optional<Platform::HidingObstacle> obstacle;
    /// How often it was asked about the obstacle.
    int questions = 0;

    int majorVersion() override { return version; }
    std::optional<Platform::HidingObstacle> hidingObstacle() override {
        ++questions;
        return obstacle;
    }
};

} // namespace TestSupport
