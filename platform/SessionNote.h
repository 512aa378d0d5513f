#pragma once

#include <optional>
#include <string>

namespace Platform {

/// One text that outlives the program, for its next run in the same session of the user. Main thread only.
class SessionNote {
public:
    virtual ~SessionNote() = default;

    /// Absent where no run of this session has left one, or it cannot be read.
    virtual std::optional<std::string> text() = 0;
    /// Replaces the note; nothing stays where `text` is absent. It is kept by the time this returns.
    virtual void keep(const std::optional<std::string>& text) = 0;
};

} // namespace Platform
