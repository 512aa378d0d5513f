#pragma once

#include <chrono>
#include <string>

namespace Platform {

/// The date and time as people read it.
class WallClock {
public:
    virtual ~WallClock() = default;

    virtual std::chrono::system_clock::time_point now() = 0;
    /// The moment in local time, in the digits and field order of "yyyy-MM-dd HH.mm.ss".
    virtual std::string localTimestamp(std::chrono::system_clock::time_point moment) = 0;
};

} // namespace Platform
