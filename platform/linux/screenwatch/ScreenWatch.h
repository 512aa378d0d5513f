#pragma once

#include "platform/ScreenWatcherProbe.h"
#include "platform/linux/screenwatch/CaptureWatch.h"

#include <memory>
#include <vector>

namespace LinuxPlatform {

/// Watches all roads to the picture of the screen at once, for everybody who asks.
class ScreenWatch : public Platform::ScreenWatcherProbe {
public:
    explicit ScreenWatch(std::vector<std::unique_ptr<CaptureWatch>> roads);

    /// Knows one symbol, "CGSIsScreenWatcherPresent".
    Query lookUp(const std::string& symbol) override;
    Platform::Subscription addNewsObserver(std::function<void()> handler) override;

private:
    std::vector<std::unique_ptr<CaptureWatch>> roads_;
    Platform::Subscribers<> newsObservers_;
    std::vector<Platform::Subscription> newsOfRoads_;
};

} // namespace LinuxPlatform
