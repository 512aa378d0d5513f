#include "Curtain/ScreenWatcher.h"

namespace Curtain {

ScreenWatcher::ScreenWatcher(Platform::ScreenWatcherProbe& probe)
    : fn(probe.lookUp(Platform::screenWatcherSymbol)) {}

} // namespace Curtain
