#pragma once

#include "platform/ScreenWatcherProbe.h"

#include <string>
#include <vector>

namespace TestSupport {

/// A probe whose answer the test chooses.
class FakeScreenWatcherProbe : public Platform::ScreenWatcherProbe {
public:
    bool isPresent = true;
    bool isWatched = false;
    std::vector<std::string> lookUps;
    int queries = 0;

    std::function<bool()> lookUp(const std::string& symbol) override {
        lookUps.push_back(symbol);
        if (!isPresent || symbol != "CGSIsScreenWatcherPresent") {
            return nullptr;
        }
        return [this] {
            ++queries;
            return isWatched;
        };
    }
};

} // namespace TestSupport
