#include "platform/linux/screenwatch/ScreenWatch.h"

#include <utility>

namespace LinuxPlatform {

ScreenWatch::ScreenWatch(std::vector<std::unique_ptr<CaptureWatch>> roads) : roads_(std::move(roads)) {}

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
