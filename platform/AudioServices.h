#pragma once

#include "platform/AudioEngine.h"
#include "platform/AudioFile.h"
#include "platform/AudioFormat.h"
#include "platform/AudioPlayer.h"
#include "platform/Subscription.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace Platform {

/// Makes the pieces of the microphone check. Main thread only; outlives what it makes.
class AudioServices {
public:
    virtual ~AudioServices() = default;

    /// Begins to look for microphones, so that `hasInputDevice` need not wait as long as the subscription
    /// lasts. Does not wait itself.
    virtual Subscription prepare() = 0;
    /// Whether there is a microphone, the default one or another. May wait a moment for the sound server.
    virtual bool hasInputDevice() = 0;
    /// Tells on the main queue, while the subscription lasts, whether there is a microphone that can be
    /// heard: once soon, and whenever that may have changed.
    virtual Subscription observeInputDevice(std::function<void(bool isThere)> observer) = 0;

    /// Hears nothing before it is started.
    virtual std::shared_ptr<AudioEngine> makeEngine() = 0;
    /// Makes a new file that only this user may read. Fails where there is anything of that name.
    virtual std::variant<std::unique_ptr<AudioFile>, AudioError>
    openFileForWriting(const std::string& path, const AudioFormat& settings) = 0;
    /// Opens the file; nothing is heard before `play`.
    virtual std::variant<std::unique_ptr<AudioPlayer>, AudioError> makePlayer(const std::string& path) = 0;
};

} // namespace Platform
