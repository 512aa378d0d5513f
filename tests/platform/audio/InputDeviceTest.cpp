#include "platform/linux/audio/SoundServer.h"

#include <gtest/gtest.h>

namespace {

using LinuxPlatform::InputDevice;

InputDevice stereoMicrophone() {
    InputDevice device{7, "microphone", {PA_SAMPLE_S16LE, 48000, 2}, {}, "Microphone"};
    pa_channel_map_init_stereo(&device.channels);
    return device;
}

TEST(InputDeviceTest, IsTheSameWithSamplesOfAnotherType) {
    for (const auto type : {PA_SAMPLE_S24LE, PA_SAMPLE_S32LE, PA_SAMPLE_FLOAT32LE}) {
        auto other = stereoMicrophone();
        other.spec.format = type;
        EXPECT_EQ(stereoMicrophone(), other);
    }
}

TEST(InputDeviceTest, IsAnotherWithAnythingElse) {
    auto other = stereoMicrophone();
    other.index = 8;
    EXPECT_NE(stereoMicrophone(), other);
    other = stereoMicrophone();
    other.name = "other";
    EXPECT_NE(stereoMicrophone(), other);
    other = stereoMicrophone();
    other.spec.rate = 44100;
    EXPECT_NE(stereoMicrophone(), other);
    other = stereoMicrophone();
    other.spec.channels = 1;
    EXPECT_NE(stereoMicrophone(), other);
    other = stereoMicrophone();
    other.channels.map[1] = PA_CHANNEL_POSITION_MONO;
    EXPECT_NE(stereoMicrophone(), other);
}

} // namespace
