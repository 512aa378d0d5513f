#pragma once

#include "platform/SystemVersion.h"

namespace TestSupport {

class FakeSystemVersion : public Platform::SystemVersion {
public:
    int version = 14;
    std::optional<Platform::HidingObstacle> obstacle;
    /// How often it was asked about the obstacle.
    int questions = 0;
    /// How often it was asked to switch the extension on, and what it says from then on.
    int switchedOn = 0;
    std::optional<Platform::HidingObstacle> obstacleOnceSwitchedOn = Platform::HidingObstacle::notKnownYet;

    int majorVersion() override { return version; }
    std::optional<Platform::HidingObstacle> hidingObstacle() override {
        ++questions;
        return obstacle;
    }
    void switchExtensionOn() override {
        ++switchedOn;
        obstacle = obstacleOnceSwitchedOn;
    }
};

} // namespace TestSupport
