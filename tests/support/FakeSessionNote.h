#pragma once

#include "platform/SessionNote.h"

#include <functional>
#include <optional>
#include <string>

namespace TestSupport {

/// A note that the test may write and read.
class FakeSessionNote : public Platform::SessionNote {
public:
    std::optional<std::string> kept;
    std::function<void()> onKeep;

    std::optional<std::string> text() override { return kept; }
    void keep(const std::optional<std::string>& text) override {
        kept = text;
        if (onKeep) {
            onKeep();
        }
    }
};

} // namespace TestSupport
