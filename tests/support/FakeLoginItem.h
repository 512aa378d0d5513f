#pragma once

#include "platform/LoginItem.h"

#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

class FakeLoginItem : public Platform::LoginItem {
public:
    std::vector<std::string> calls;
    /// What all operations answer.
    std::optional<std::string> error;
    std::optional<bool> isOff = false;

    std::optional<std::string> registerItem() override {
        calls.emplace_back("register");
        return error;
    }

    std::optional<std::string> unregisterItem() override {
        calls.emplace_back("unregister");
        isOff = false;
        return error;
    }

    std::optional<std::string> registerAnew() override {
        calls.emplace_back("register anew");
        isOff = isOff == true && error;
        return error;
    }

    std::optional<bool> isSwitchedOff() const override { return isOff; }
};

} // namespace TestSupport
