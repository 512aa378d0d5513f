#include "platform/linux/desktopicons/EarlierValue.h"

#include <cstdlib>
#include <fstream>
#include <utility>

namespace LinuxPlatform {
namespace {

std::string environmentValue(const char* name) {
    const auto* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Differs from one login to the next, also after the machine has been started again.
std::string sessionMark() {
    std::string boot;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), boot);
    return boot + " " + environmentValue("XDG_SESSION_ID") + " " + environmentValue("DISPLAY");
}

} // namespace

EarlierValue::EarlierValue(CurtainCore::UserDefaults& state, std::string name)
    : state_(state),
      name_(std::move(name)) {}

std::optional<std::string> EarlierValue::get() const {
    const auto text = state_.string(name_);
    const auto end = text ? text->find('\n') : std::string::npos;
    return end == std::string::npos ? std::nullopt : std::optional(text->substr(end + 1));
}

bool EarlierValue::isOfThisSession() const {
    const auto text = state_.string(name_);
    return text && text->starts_with(sessionMark() + "\n");
}

void EarlierValue::keep(const std::string& value) {
    state_.setString(name_, sessionMark() + "\n" + value);
}

void EarlierValue::forget() {
    if (state_.contains(name_)) {
        state_.remove(name_);
    }
}

void EarlierValue::replace(const std::optional<std::string>& value) {
    if (value) {
        keep(*value);
    } else {
        forget();
    }
}

} // namespace LinuxPlatform
