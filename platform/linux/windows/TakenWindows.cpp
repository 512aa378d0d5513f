#include "platform/linux/windows/TakenWindows.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// "IDENTIFIER PLACE".
std::optional<TakenWindow> takenWindowIn(std::string_view line) {
    TakenWindow window;
    const auto end = line.find(' ');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const auto number = line.substr(0, end);
    const auto parsed = std::from_chars(number.data(), number.data() + number.size(), window.id);
    if (parsed.ec != std::errc{} || parsed.ptr != number.data() + number.size()) {
        return std::nullopt;
    }
    window.place = line.substr(end + 1);
    return window;
}

} // namespace

TakenWindows::TakenWindows(std::optional<EarlierValue> record) : record_(std::move(record)) {
    read();
}

void TakenWindows::take(std::span<const TakenWindow> windows) {
    const auto countBefore = places_.size();
    for (const auto& window : windows) {
        places_.emplace(window.id, window.place);
    }
    if (places_.size() != countBefore) {
        write();
    }
}

void TakenWindows::forget(std::span<const WindowId> windows) {
    const auto countBefore = places_.size();
    for (const auto window : windows) {
        places_.erase(window);
    }
    if (places_.size() != countBefore) {
        write();
    }
}

void TakenWindows::forget(const WindowPredicate& isBackOrGone) {
    if (std::erase_if(places_, [&](const auto& taken) { return isBackOrGone(taken.first); }) > 0) {
        write();
    }
}

std::optional<std::string> TakenWindows::placeOf(WindowId window) const {
    const auto found = places_.find(window);
    return found == places_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<TakenWindow> TakenWindows::all() const {
    std::vector<TakenWindow> windows;
    windows.reserve(places_.size());
    for (const auto& [id, place] : places_) {
        windows.push_back({id, place});
    }
    return windows;
}

void TakenWindows::read() {
    const auto text = record_ && record_->isOfThisSession() ? record_->get() : std::nullopt;
    std::string_view rest = text ? std::string_view(*text) : std::string_view();
    while (!rest.empty()) {
        const auto end = std::min(rest.find('\n'), rest.size());
        if (auto window = takenWindowIn(rest.substr(0, end))) {
            places_.emplace(window->id, std::move(window->place));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

void TakenWindows::write() {
    if (!record_) {
        return;
    }
    std::string text;
    for (const auto& [id, place] : places_) {
        text += std::to_string(id) + " " + place + "\n";
    }
    record_->replace(places_.empty() ? std::nullopt : std::optional(text));
}

} // namespace LinuxPlatform
