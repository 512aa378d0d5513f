#pragma once

#include "platform/HotKeyService.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/SystemShortcuts.h"
#include "platform/linux/shortcutlists/Accelerator.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace LinuxPlatform {

/// Asks whoever may have taken a combination: the hot-key service, which fails where another program holds
/// it, and the lists of the desktop that is running.
class DesktopShortcuts : public Platform::SystemShortcuts {
public:
    /// All that the key of a virtual key code can mean.
    using SymbolsOfKey = std::function<std::vector<xkb_keysym_t>(std::int64_t keyCode)>;

    /// `service` and `mainQueue` outlive this object.
    DesktopShortcuts(Platform::HotKeyService& service, Platform::MainQueue& mainQueue,
                     SymbolsOfKey symbolsOfKey, std::vector<std::unique_ptr<ShortcutList>> lists);

    void isTaken(const Platform::HotKeyCombination& combination, Answer answer) override;

private:
    bool isHeldByAnotherProgram(const Platform::HotKeyCombination& combination);

    Platform::HotKeyService& service_;
    Platform::MainQueue& mainQueue_;
    SymbolsOfKey symbolsOfKey_;
    std::vector<std::unique_ptr<ShortcutList>> lists_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
