#include "hotkeys/HotKeyCenter.h"

#include <algorithm>
#include <string>
#include <utility>

namespace KeyboardShortcuts {
namespace {

/// The characters SSKS.
constexpr std::uint32_t signature = 0x53534B53;

} // namespace

HotKeyCenter::HotKeyCenter(Platform::HotKeyService& service, Platform::Log& log)
    : service_(service),
      log_(log) {}

HotKeyCenter::~HotKeyCenter() {
    for (const auto& [id, hotKey] : hotKeys_) {
        service_.unregisterHotKey({signature, id});
    }
}

void HotKeyCenter::registerShortcut(const Shortcut& shortcut, Handler onKeyDown, Handler onKeyUp) {
    if (holds(shortcut)) {
        return;
    }
    if (isPaused_) {
        waiting_.push_back({shortcut, std::move(onKeyDown), std::move(onKeyUp)});
        return;
    }
    const auto id = ++lastId_;
    const auto status =
        service_.registerHotKey({shortcut.carbonKeyCode, shortcut.carbonModifiers}, {signature, id});
    if (status != 0) {
        log_.writeLine("Error registering hotkey " + shortcut.description() + ": " + std::to_string(status));
        return;
    }
    if (!eventHandler_) {
        eventHandler_ =
            service_.installEventHandler([this](auto event, auto eventId) { handle(event, eventId); });
    }
    hotKeys_.emplace(id, HotKey{shortcut, std::move(onKeyDown), std::move(onKeyUp)});
}

bool HotKeyCenter::holds(const Shortcut& shortcut) const {
    return std::ranges::any_of(hotKeys_,
                               [&](const auto& entry) { return entry.second.shortcut == shortcut; }) ||
           std::ranges::find(waiting_, shortcut, &HotKey::shortcut) != waiting_.end();
}

void HotKeyCenter::unregisterShortcut(const Shortcut& shortcut) {
    std::erase_if(hotKeys_, [&](const auto& entry) {
        const bool matches = entry.second.shortcut == shortcut;
        if (matches) {
            service_.unregisterHotKey({signature, entry.first});
        }
        return matches;
    });
    std::erase_if(waiting_, [&](const auto& hotKey) { return hotKey.shortcut == shortcut; });
}

void HotKeyCenter::pause() {
    isPaused_ = true;
    for (auto& [id, hotKey] : hotKeys_) {
        service_.unregisterHotKey({signature, id});
        waiting_.push_back(std::move(hotKey));
    }
    hotKeys_.clear();
}

void HotKeyCenter::resume() {
    isPaused_ = false;
    for (auto& hotKey : std::exchange(waiting_, {})) {
        registerShortcut(hotKey.shortcut, std::move(hotKey.onKeyDown), std::move(hotKey.onKeyUp));
    }
}

void HotKeyCenter::handle(Platform::HotKeyEvent event, Platform::HotKeyID id) {
    const auto found = id.signature == signature ? hotKeys_.find(id.id) : hotKeys_.end();
    if (found == hotKeys_.end()) {
        return;
    }
    // The handler may change the registrations.
    const auto hotKey = found->second;
    const auto& handler = event == Platform::HotKeyEvent::pressed ? hotKey.onKeyDown : hotKey.onKeyUp;
    if (handler) {
        handler(hotKey.shortcut);
    }
}

} // namespace KeyboardShortcuts
