#pragma once

#include <string>

namespace Platform {

/// The user's language settings.
class Locale {
public:
    virtual ~Locale() = default;

    /// The language that the user prefers over all others, as its two- or three-letter code without region;
    /// "en" when none is set.
    virtual std::string preferredLanguageCode() = 0;
};

} // namespace Platform
