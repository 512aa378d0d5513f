#include "platform/linux/audio/SoundSources.h"

#include <algorithm>

namespace LinuxPlatform {

bool SoundSources::hasMicrophone() const {
    return std::ranges::any_of(sources, [](const SoundSource& source) { return !source.isMonitor; });
}

std::optional<Microphone> SoundSources::microphone() const {
    if (!hasMicrophone()) {
        return std::nullopt;
    }
    const auto* const wanted = defaultSource();
    const bool isLeftAlone = wanted != nullptr && wouldBeSwitched(*wanted);
    const auto* const heard = wanted == nullptr || isLeftAlone ? best() : wanted;
    return heard != nullptr ? std::optional(Microphone{heard->device, isLeftAlone}) : std::nullopt;
}

const SoundSource* SoundSources::find(std::string_view name) const {
    const auto found = std::ranges::find(
        sources, name, [](const auto& source) -> std::string_view { return source.device.name; });
    return found != sources.end() ? &*found : nullptr;
}

const SoundSource* SoundSources::defaultSource() const {
    const auto* const followed = followedName.empty() ? nullptr : find(followedName);
    return followed != nullptr ? followed : find(defaultName);
}

bool SoundSources::wouldBeSwitched(const SoundSource& source) const {
    if (!source.isHeadsetLoopback) {
        return false;
    }
    const auto profile = activeProfiles.find(source.card);
    return profile == activeProfiles.end() ||
           !(profile->second.starts_with("headset-head-unit") || profile->second == "bap-duplex");
}

const SoundSource* SoundSources::best() const {
    const SoundSource* best = nullptr;
    for (const auto& source : sources) {
        if (!source.isMonitor && !wouldBeSwitched(source) &&
            (best == nullptr || source.priority > best->priority)) {
            best = &source;
        }
    }
    return best;
}

} // namespace LinuxPlatform
