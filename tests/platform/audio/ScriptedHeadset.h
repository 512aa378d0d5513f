#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace TestSupport {

/// A Bluetooth headset's card as PipeWire's monitor of such devices makes it, played by this process: the
/// profiles "off", "a2dp-sink" (music, no microphone) and "headset-head-unit" (a call), and a route for each
/// of its two ends. It begins with music. Whoever switches it, session manager or mixer, does so as with a
/// real one. Needs a PipeWire daemon; callable from any thread.
class ScriptedHeadset {
public:
    /// No number.
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr auto music = "a2dp-sink";
    static constexpr auto call = "headset-head-unit";

    ScriptedHeadset();
    ~ScriptedHeadset();
    ScriptedHeadset(const ScriptedHeadset&) = delete;
    ScriptedHeadset& operator=(const ScriptedHeadset&) = delete;

    /// PipeWire's number of the card; `none` until it has been made.
    std::uint32_t id() const;
    std::string profile() const;
    /// How often another profile was set.
    int switches() const;

private:
    class Device;

    std::unique_ptr<Device> device_;
};

} // namespace TestSupport
