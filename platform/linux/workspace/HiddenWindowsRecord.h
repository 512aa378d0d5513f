#pragma once

#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/system/ProcessTable.h"
#include "platform/linux/windows/WindowSystem.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Which windows are hidden on request, on disk for the next run in the same session. It believes that only
/// of windows whose process is still the one that it was. Main thread only.
class HiddenWindowsRecord {
public:
    /// Without `record` nothing is kept.
    explicit HiddenWindowsRecord(std::optional<EarlierValue> record = std::nullopt,
                                 ProcessTable processes = ProcessTable());

    /// Whether an earlier run has hidden the window, as far as is known; true once for each.
    bool takeEarlier(const Window& window);
    /// To be called before windows are hidden, and when some are back. What is left of an earlier run stays.
    void keep(const std::vector<Window>& hidden);

private:
    /// Of the process, for no other to be mistaken for it; a window whose process is not known has none.
    std::string markOf(const Window& window) const;
    void read();
    void write();

    std::optional<EarlierValue> record_;
    ProcessTable processes_;
    /// Marks of processes by window.
    std::map<WindowId, std::string> earlier_;
    std::map<WindowId, std::string> hidden_;
    /// There is more on disk than is left.
    bool isStale_ = false;
};

} // namespace LinuxPlatform
