#pragma once

#include <pulse/channelmap.h>
#include <pulse/sample.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// A microphone and what it delivers.
struct InputDevice {
    std::uint32_t index = 0;
    std::string name;
    pa_sample_spec spec{};
    pa_channel_map channels{};
    /// For the user.
    std::string description;

    /// The type of its samples, which cards change when they begin to run, is nobody's business: they are
    /// asked for as floating-point numbers.
    bool operator==(const InputDevice& other) const {
        return index == other.index && name == other.name && spec.rate == other.spec.rate &&
               spec.channels == other.spec.channels && pa_channel_map_equal(&channels, &other.channels) != 0;
    }
};

/// A source as the sound server lists it.
struct SoundSource {
    InputDevice device;
    /// It hears what others play.
    bool isMonitor = false;
    /// It stands for the microphone of a Bluetooth headset, whether that is switched on or not; whoever
    /// records from it has it switched on, and the headset then plays music as a telephone does.
    bool isHeadsetLoopback = false;
    std::uint32_t card = 0;
    /// How much the session prefers it.
    int priority = 0;
};

/// The microphone that is heard.
struct Microphone {
    InputDevice device;
    /// In the place of the default one, which is left alone.
    bool isSubstitute = false;
};

/// What is known of a session's sources, and which of them is the microphone.
struct SoundSources {
    /// As the sound server has it.
    std::string defaultName;
    /// What the session has connected to a stream that asks for the default source, where that is a later
    /// word than the server's; otherwise empty.
    std::string followedName;
    std::vector<SoundSource> sources;
    /// Of the cards, by their index.
    std::map<std::uint32_t, std::string> activeProfiles;

    bool hasMicrophone() const;
    /// The default source. A monitor is one only where there are microphones and somebody has chosen it all
    /// the same; otherwise it stands for their absence. In place of one that is not listed, and of a headset
    /// that would have to be switched, the one of the others that the session prefers.
    std::optional<Microphone> microphone() const;

private:
    const SoundSource* find(std::string_view name) const;
    const SoundSource* defaultSource() const;
    bool wouldBeSwitched(const SoundSource& source) const;
    const SoundSource* best() const;
};

} // namespace LinuxPlatform
