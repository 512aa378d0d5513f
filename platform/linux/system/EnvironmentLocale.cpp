#include "platform/linux/system/EnvironmentLocale.h"

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// "pt" of "pt_BR.UTF-8@euro:en".
std::string languageOf(std::string_view locale) {
    return std::string(locale.substr(0, locale.find_first_of(":_.@-")));
}

} // namespace

EnvironmentLocale::EnvironmentLocale()
    : EnvironmentLocale([](const char* variable) -> std::optional<std::string> {
          const auto* const value = std::getenv(variable);
          return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
      }) {}

EnvironmentLocale::EnvironmentLocale(Environment environment) : environment_(std::move(environment)) {}

std::string EnvironmentLocale::preferredLanguageCode() {
    const auto locale = localeName();
    if (locale.empty() || locale == "C" || locale == "POSIX") {
        return "en";
    }
    const auto preferred = languageOf(environment_("LANGUAGE").value_or(std::string{}));
    const auto language = preferred.empty() ? languageOf(locale) : preferred;
    return language.empty() || language == "C" ? "en" : language;
}

std::string EnvironmentLocale::localeName() const {
    for (const auto* const variable : std::array{"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const auto value = environment_(variable); value && !value->empty()) {
            return *value;
        }
    }
    return {};
}

} // namespace LinuxPlatform
