#include "platform/linux/camera/V4l2Device.h"

#include "platform/linux/camera/FrameDecoder.h"
#include "tests/platform/camera/CameraWorld.h"

#include <gmock/gmock.h>

#include <chrono>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

using LinuxPlatform::KernelVideoDeviceCalls;
using LinuxPlatform::V4l2Device;
using LinuxPlatform::VideoFrame;

/// The real calls, answered by PipeWire in the kernel's place.
TEST(V4l2DeviceTest, StreamsTheCamerasPicturesThroughMappedMemory) {
    KernelVideoDeviceCalls calls;
    V4l2Device device(calls, "/dev/video0");
    const auto description = device.describe();
    ASSERT_TRUE(description);
    EXPECT_FALSE(description->name.empty());
    ASSERT_EQ(device.start(), V4l2Device::Start::begun);
    const int wakeUp = eventfd(0, EFD_CLOEXEC);
    LinuxPlatform::FrameDecoder decoder;
    int frames = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    // More than there are buffers.
    while (frames < 10 && std::chrono::steady_clock::now() < end) {
        const auto turn = device.next(wakeUp, std::chrono::milliseconds(200), [&](const VideoFrame& frame) {
            const auto picture = decoder.picture(frame, 332, 187);
            ASSERT_TRUE(picture);
            EXPECT_TRUE(TestSupport::showsBars(*picture)) << "frame " << frames;
            ++frames;
        });
        ASSERT_NE(turn, V4l2Device::Turn::failed);
    }
    EXPECT_EQ(frames, 10);
    close(wakeUp);
}

} // namespace
