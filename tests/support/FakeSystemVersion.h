#pragma once

#include "platform/SystemVersion.h"

namespace TestSupport {

class FakeSystemVersion : public Platform::SystemVersion {
public:
    int version = 14;
    std::optional<Platform::HidingObstacle> obstacle;

    int majorVersion() override { return version; }
    std::optional<Platform::HidingObstacle> hidingObstacle() override { return obstacle; }
};

} // namespace TestSupport
