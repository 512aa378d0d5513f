#include "platform/linux/donotdisturb/GSettingsQuietRoad.h"

#include "platform/linux/session/BoundedQuestion.h"

#include <gio/gio.h>

#include <chrono>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::string_view notChosen = "default ";
constexpr std::chrono::milliseconds patience{500};

} // namespace

GSettingsQuietRoad::GSettingsQuietRoad(std::string name, GSettingsKey key, std::string quietValue)
    : name_(std::move(name)),
      key_(std::move(key)),
      quietValue_(std::move(quietValue)) {}

void GSettingsQuietRoad::read(std::function<void(std::optional<std::string> state)> onState) {
    if (const auto chosen = key_.chosenValue()) {
        onState(chosen);
        return;
    }
    const auto value = key_.value();
    onState(value ? std::optional(std::string(notChosen) + *value) : std::nullopt);
}

bool GSettingsQuietRoad::isQuiet(const std::string& state) const {
    return state == quietValue_ || state == std::string(notChosen) + quietValue_;
}

std::string GSettingsQuietRoad::quietened(const std::string& /*state*/) const {
    return quietValue_;
}

void GSettingsQuietRoad::write(const std::string& state,
                               std::function<void(std::optional<bool> isDone)> onDone) {
    const bool isDone = state.starts_with(notChosen) ? key_.reset() : key_.write(state);
    // A process that ends before it is out takes it along.
    const auto isOut = answerWithin<bool>(Patience(patience), [] {
        g_settings_sync();
        return true;
    });
    onDone(isOut ? std::optional(isDone) : std::nullopt);
}

} // namespace LinuxPlatform
