#pragma once

#include <string>

namespace Platform {

class UuidSource {
public:
    virtual ~UuidSource() = default;

    /// A new random identifier in its usual text form.
    virtual std::string makeUuid() = 0;
};

} // namespace Platform
