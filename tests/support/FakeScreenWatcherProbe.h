#pragma once

#include "platform/ScreenWatcherProbe.h"
#include "platform/Subscribers.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A probe whose answer the test chooses.
class FakeScreenWatcherProbe : public Platform::ScreenWatcherProbe {
public:
    bool isPresent = true;
    std::optional<bool> isWatched = false;
    std::vector<std::string> lookUps;
    int queries = 0;
    Platform::Subscribers<> newsObservers;

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

    Platform::Subscription addNewsObserver(std::function<void()> handler) override {
        return newsObservers.add(std::move(handler));
    }
};

} // namespace TestSupport
