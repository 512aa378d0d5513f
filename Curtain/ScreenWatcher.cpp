#include "Curtain/ScreenWatcher.h"

namespace Curtain {

ScreenWatcher::ScreenWatcher(Platform::ScreenWatcherProbe& probe)
    : fn(probe.lookUp("CGSIsScreenWatcherPresent")) {}

} // namespace Curtain
