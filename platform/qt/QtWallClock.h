#pragma once

#include "platform/WallClock.h"

namespace QtPlatform {

class QtWallClock : public Platform::WallClock {
public:
    std::chrono::system_clock::time_point now() override;
    std::string localTimestamp(std::chrono::system_clock::time_point moment) override;
};

} // namespace QtPlatform
