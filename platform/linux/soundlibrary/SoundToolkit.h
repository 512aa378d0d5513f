#pragma once

#include "platform/AudioServices.h"
#include "platform/MainQueue.h"

namespace LinuxPlatform {

/// Sound. It stands in a library of its own, since it brings a dozen others that nobody needs who is only
/// protected.
class SoundToolkit : public Platform::AudioServices {
public:
    /// When the computer falls asleep, microphones and speakers are let go as if there were none any more;
    /// when it wakes, they are found again. Waits a moment for the first.
    virtual void setSuspended(bool isSuspended) = 0;
};

/// The library's only entry, whose caller owns the result. The queue outlives the toolkit.
using MakeSoundToolkit = SoundToolkit*(Platform::MainQueue&);
constexpr const char* nameOfMakeSoundToolkit = "curtainMakeSoundToolkit";
constexpr const char* soundLibraryFileName = "curtain-sound.so";

} // namespace LinuxPlatform
