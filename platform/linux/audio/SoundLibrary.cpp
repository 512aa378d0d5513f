#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/linux/soundlibrary/SoundToolkit.h"

extern "C" __attribute__((visibility("default"))) LinuxPlatform::SoundToolkit*
curtainMakeSoundToolkit(Platform::MainQueue& mainQueue) {
    return std::make_unique<LinuxPlatform::PulseAudioServices>(mainQueue).release();
}
