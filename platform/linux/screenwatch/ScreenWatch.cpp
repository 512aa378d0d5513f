#include "platform/linux/screenwatch/ScreenWatch.h"

#include <utility>

namespace LinuxPlatform {

ScreenWatch::ScreenWatch(std::vector<std::unique_ptr<CaptureWatch>> roads) : roads_(std::move(roads)) {
    for (const auto& road : roads_) {
        newsOfRoads_.push_back(road->addNewsObserver([this] { newsObservers_.tell(); }));
    }
}

Platform::Subscription ScreenWatch::addNewsObserver(std::function<void()> handler) {
    return newsObservers_.add(std::move(handler));
}

Platform::ScreenWatcherProbe::Query ScreenWatch::lookUp(const std::string& symbol) {
    if (roads_.empty() || symbol != Platform::screenWatcherSymbol) {
        return nullptr;
    }
    return [this]() -> std::optional<bool> {
        std::optional<bool> answer = false;
        for (const auto& road : roads_) {
            const auto isCaptured = road->isScreenCaptured();
            if (isCaptured == true) {
                return true;
            }
            if (!isCaptured) {
                answer.reset();
            }
        }
        return answer;
    };
}

} // namespace LinuxPlatform
