#pragma once

#include "Curtain/DesktopController.h"
#include "core/HideEngine.h"
#include "core/PreferencesStore.h"

namespace Curtain::FixEverything {

/// Whether the user wants to be asked about notifications, and has not dealt with them.
bool needsQuiet(const CurtainCore::Preferences& preferences);

/// Privacy mode on for all private apps, and the desktop icons hidden where the user wants that. Returns
/// whether notifications still need the user's attention. Main thread only.
bool run(CurtainCore::HideEngine& engine, CurtainCore::PreferencesStore& store,
         const DesktopController& desktop);

} // namespace Curtain::FixEverything
