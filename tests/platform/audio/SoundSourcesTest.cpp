#include "platform/linux/audio/SoundSources.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::SoundSource;
using LinuxPlatform::SoundSources;

SoundSource source(const std::string& name) {
    SoundSource result;
    result.device.name = name;
    return result;
}

SoundSource monitor(const std::string& name) {
    auto result = source(name);
    result.isMonitor = true;
    return result;
}

SoundSource headset(std::uint32_t card) {
    auto result = source("headset");
    result.isHeadsetLoopback = true;
    result.card = card;
    result.priority = 2000;
    return result;
}

SoundSources listing(const std::string& defaultName, std::vector<SoundSource> sources) {
    SoundSources result;
    result.defaultName = defaultName;
    result.sources = std::move(sources);
    return result;
}

std::string microphoneOf(const SoundSources& sources) {
    const auto microphone = sources.microphone();
    return microphone ? microphone->device.name : "none";
}

TEST(SoundSourcesTest, TheDefaultSourceIsTheMicrophone) {
    const auto sources = listing("two", {source("one"), source("two"), monitor("speakers.monitor")});
    EXPECT_TRUE(sources.hasMicrophone());
    EXPECT_EQ(microphoneOf(sources), "two");
}

TEST(SoundSourcesTest, AMonitorAloneIsNoMicrophone) {
    const auto sources = listing("speakers.monitor", {monitor("speakers.monitor")});
    EXPECT_FALSE(sources.hasMicrophone());
    EXPECT_EQ(microphoneOf(sources), "none");
}

TEST(SoundSourcesTest, AMonitorBesideMicrophonesHasBeenChosen) {
    const auto sources = listing("speakers.monitor", {monitor("speakers.monitor"), source("one")});
    EXPECT_EQ(microphoneOf(sources), "speakers.monitor");
}

TEST(SoundSourcesTest, TheSessionKnowsBetterThanTheServer) {
    auto sources = listing("one", {source("one"), source("two")});
    sources.followedName = "two";
    EXPECT_EQ(microphoneOf(sources), "two");
    sources.followedName = "not listed any more";
    EXPECT_EQ(microphoneOf(sources), "one");
}

TEST(SoundSourcesTest, ADefaultSourceThatIsNotListedIsReplaced) {
    auto preferred = source("two");
    preferred.priority = 1000;
    const auto sources = listing("@DEFAULT_SOURCE@", {source("one"), preferred, monitor("speakers.monitor")});
    EXPECT_EQ(microphoneOf(sources), "two");
    EXPECT_FALSE(sources.microphone()->isSubstitute) << "A stream may ask for the default one.";
}

TEST(SoundSourcesTest, AHeadsetThatPlaysMusicIsLeftAlone) {
    auto builtIn = source("built-in");
    builtIn.priority = 1000;
    auto sources = listing("headset", {source("line"), headset(7), builtIn, monitor("a.monitor")});
    EXPECT_EQ(microphoneOf(sources), "built-in") << "nothing is known of its card";
    for (const auto* const profile : {"a2dp-sink", "a2dp-sink-sbc_xq", "off", "audio-gateway"}) {
        sources.activeProfiles[7] = profile;
        EXPECT_EQ(microphoneOf(sources), "built-in") << profile;
        EXPECT_TRUE(sources.microphone()->isSubstitute) << profile;
    }
    for (const auto* const profile : {"headset-head-unit", "headset-head-unit-msbc", "bap-duplex"}) {
        sources.activeProfiles[7] = profile;
        EXPECT_EQ(microphoneOf(sources), "headset") << profile;
        EXPECT_FALSE(sources.microphone()->isSubstitute) << profile;
    }
}

TEST(SoundSourcesTest, AHeadsetAloneThatPlaysMusicIsNotHeard) {
    auto sources = listing("headset", {headset(7), monitor("a.monitor")});
    sources.activeProfiles[7] = "a2dp-sink";
    EXPECT_TRUE(sources.hasMicrophone());
    EXPECT_EQ(microphoneOf(sources), "none");
}

TEST(SoundSourcesTest, TwoHundredSourcesAreAsGoodAsOne) {
    auto sources = listing("source 199", {});
    for (int number = 0; number < 200; ++number) {
        sources.sources.push_back(source("source " + std::to_string(number)));
    }
    EXPECT_EQ(microphoneOf(sources), "source 199");
}

} // namespace
