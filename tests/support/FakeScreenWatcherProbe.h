#pragma once

#include "platform/ScreenWatcherProbe.h"

#include <string>
#include <vector>

namespace TestSupport {

/// A probe whose answer the test chooses.
class FakeScreenWatcherProbe : public Platform::ScreenWatcherProbe {
public:
    bool isPresent = true;
    std::optional<bool> isWatched = false;
    std::vector<std::string> lookUps;
    int queries = 0;

    Query lookUp(const std::string& symbol) override {
        lookUps.push_back(symbol);
        if (!isPresent || symbol != "CGSIsScreenWatcherPresent") {
            return nullptr;
        }
        return [this]() -> std::optional<bool> {
            ++queries;
            return isWatched;
        };
    }
};

} // namespace TestSupport
