#include "platform/linux/session/EarlierValue.h"

#include <utility>

namespace LinuxPlatform {

EarlierValue::EarlierValue(CurtainCore::UserDefaults& state, std::string name, std::string session)
    : state_(state),
      name_(std::move(name)),
      session_(std::move(session)) {}

std::optional<std::string> EarlierValue::get() const {
    const auto text = state_.string(name_);
    const auto end = text ? text->find('\n') : std::string::npos;
    return end == std::string::npos ? std::nullopt : std::optional(text->substr(end + 1));
}

bool EarlierValue::isOfThisSession() const {
    const auto text = state_.string(name_);
    return text && text->starts_with(session_ + "\n");
}

void EarlierValue::keep(const std::string& value) {
    state_.setString(name_, session_ + "\n" + value);
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
