#pragma once

#include "core/PreferencesStore.h"

#include <string>
#include <string_view>

namespace Curtain {

/// What became of settings that could not be loaded, in the language with this code: a sentence or two, and
/// in a line of its own the name of the copy, if one was kept.
std::string settingsLossText(const CurtainCore::PreferencesDamage& damage, std::string_view lang);

} // namespace Curtain
