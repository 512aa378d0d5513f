#pragma once

#include "platform/Keyboard.h"

#include <map>
#include <optional>
#include <string>

namespace TestSupport {

/// A keyboard whose keys have the scan codes and labels that the test gives them.
class FakeKeyboard : public Platform::Keyboard {
public:
    std::map<std::uint32_t, std::int64_t> keyCodes;
    std::map<std::int64_t, std::string> labels;
    Platform::ModifierStyle style;
    int beeps = 0;

    std::optional<std::int64_t> keyCode(std::uint32_t scanCode) override {
        const auto found = keyCodes.find(scanCode);
        return found == keyCodes.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<std::string> keyLabel(std::int64_t keyCode) override {
        const auto found = labels.find(keyCode);
        return found == labels.end() ? std::nullopt : std::optional(found->second);
    }

    Platform::ModifierStyle modifierStyle() override { return style; }
    void beep() override { ++beeps; }
};

} // namespace TestSupport
