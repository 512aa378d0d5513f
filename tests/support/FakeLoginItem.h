#pragma once

#include "platform/LoginItem.h"

#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

class FakeLoginItem : public Platform::LoginItem {
public:
    std::vector<std::string> calls;
    /// What both operations answer.
    std::optional<std::string> error;

    std::optional<std::string> registerItem() override {
        calls.emplace_back("register");
        return error;
    }

    std::optional<std::string> unregisterItem() override {
        calls.emplace_back("unregister");
        return error;
    }
};

} // namespace TestSupport
