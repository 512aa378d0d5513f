#pragma once

#include "platform/Locale.h"

#include <functional>
#include <optional>

namespace LinuxPlatform {

/// The language as the environment names it: LANGUAGE's first entry, unless the locale is the one without
/// languages ("C"), else the first that is set of LC_ALL, LC_MESSAGES and LANG.
class EnvironmentLocale : public Platform::Locale {
public:
    /// Answers the value of a variable, absent when it is not set.
    using Environment = std::function<std::optional<std::string>(const char* variable)>;

    /// With the environment of this process.
    EnvironmentLocale();
    explicit EnvironmentLocale(Environment environment);

    std::string preferredLanguageCode() override;

private:
    std::string localeName() const;

    Environment environment_;
};

} // namespace LinuxPlatform
