#pragma once

#include "platform/UuidSource.h"

namespace QtPlatform {

class QtUuidSource : public Platform::UuidSource {
public:
    /// In upper case, without braces.
    std::string makeUuid() override;
};

} // namespace QtPlatform
