#pragma once

#include "core/PreferencesStore.h"
#include "platform/Locale.h"

#include <string>

namespace Curtain {

/// Which language the program speaks: the one that its user chose, else the desktop's. Main thread only.
class UserLanguage {
public:
    /// Both outlive it.
    UserLanguage(const CurtainCore::PreferencesStore& store, Platform::Locale& locale);

    /// The code of one that there are texts in.
    std::string code() const;

private:
    const CurtainCore::PreferencesStore& store_;
    Platform::Locale& locale_;
};

} // namespace Curtain
