#pragma once

#include "platform/UrlOpener.h"

namespace Curtain::NotificationChecker {

/// Returns whether this desktop has such settings.
bool openFocusSettings(Platform::UrlOpener& opener);

} // namespace Curtain::NotificationChecker
