#pragma once

#include "platform/UuidSource.h"

#include <string>

namespace TestSupport {

/// Counts instead of rolling dice.
class FakeUuidSource : public Platform::UuidSource {
public:
    int last = 0;

    std::string makeUuid() override { return "uuid-" + std::to_string(++last); }
};

} // namespace TestSupport
