#include "platform/linux/screenwatch/ScreenWatch.h"

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

ScreenWatch::ScreenWatch(std::vector<std::unique_ptr<CaptureWatch>> roads) : roads_(std::move(roads)) {}

Platform::ScreenWatcherProbe::Query ScreenWatch::lookUp(const std::string& symbol) {
    if (roads_.empty() || symbol != "CGSIsScreenWatcherPresent") {
        return nullptr;
    }
    return [this]() -> std::optional<bool> {
        return std::ranges::any_of(roads_, [](auto& road) { return road->isScreenCaptured(); });
    };
}

} // namespace LinuxPlatform
