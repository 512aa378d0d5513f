#pragma once

#include "platform/Locale.h"

#include <string>

namespace TestSupport {

class FakeLocale : public Platform::Locale {
public:
    std::string language = "en";

    std::string preferredLanguageCode() override { return language; }
};

} // namespace TestSupport
