#pragma once

#include "platform/linux/soundlibrary/SoundToolkit.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace LinuxPlatform {

/// The sound toolkit, which is made when something of it is first asked for.
class LazySound : public SoundToolkit {
public:
    /// `make` never returns null.
    explicit LazySound(std::function<std::unique_ptr<SoundToolkit>()> make);

    Platform::Subscription prepare() override;
    bool hasInputDevice() override;
    Platform::Subscription observeInputDevice(std::function<void(bool isThere)> observer) override;
    std::shared_ptr<Platform::AudioEngine> makeEngine() override;
    std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) override;
    std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
    makePlayer(const std::string& path) override;
    /// A toolkit that is not there has nothing to let go.
    void setSuspended(bool isSuspended) override;

private:
    SoundToolkit& toolkit();

    std::function<std::unique_ptr<SoundToolkit>()> make_;
    std::unique_ptr<SoundToolkit> toolkit_;
};

} // namespace LinuxPlatform
