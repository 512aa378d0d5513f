#include "platform/linux/workspace/HiddenWindowsRecord.h"

#include <sstream>
#include <utility>

namespace LinuxPlatform {

HiddenWindowsRecord::HiddenWindowsRecord(std::optional<EarlierValue> record, ProcessTable processes)
    : record_(std::move(record)),
      processes_(std::move(processes)) {
    read();
}

bool HiddenWindowsRecord::takeEarlier(const Window& window) {
    const auto found = earlier_.find(window.id);
    if (found == earlier_.end()) {
        return false;
    }
    const bool isSame = found->second == markOf(window);
    earlier_.erase(found);
    isStale_ = true;
    return isSame;
}

void HiddenWindowsRecord::keep(const std::vector<Window>& hidden) {
    if (!record_) {
        return;
    }
    std::map<WindowId, std::string> now;
    for (const auto& window : hidden) {
        const auto before = hidden_.find(window.id);
        now.emplace(window.id, before != hidden_.end() ? before->second : markOf(window));
    }
    const bool isStale = std::exchange(isStale_, false);
    if (std::exchange(hidden_, now) != now || isStale) {
        write();
    }
}

std::string HiddenWindowsRecord::markOf(const Window& window) const {
    const auto process = window.hints.process;
    if (!process) {
        return "-";
    }
    return std::to_string(*process) + "," + std::to_string(processes_.startTime(*process).value_or(0));
}

/// Lines of "WINDOW MARK".
void HiddenWindowsRecord::read() {
    std::istringstream lines(record_ && record_->isOfThisSession() ? record_->get().value_or("") : "");
    WindowId window = 0;
    for (std::string mark; lines >> window >> mark;) {
        earlier_.emplace(window, mark);
    }
}

void HiddenWindowsRecord::write() {
    auto all = earlier_;
    all.insert(hidden_.begin(), hidden_.end());
    std::string text;
    for (const auto& [window, mark] : all) {
        text += std::to_string(window) + " " + mark + "\n";
    }
    record_->replace(all.empty() ? std::nullopt : std::optional(text));
}

} // namespace LinuxPlatform
