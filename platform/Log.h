#pragma once

#include <string>

namespace Platform {

/// The diagnostic output.
class Log {
public:
    virtual ~Log() = default;

    /// Writes one line; `line` holds no line break.
    virtual void writeLine(const std::string& line) = 0;
};

} // namespace Platform
