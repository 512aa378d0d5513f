#include "platform/linux/soundlibrary/LazySound.h"

#include <utility>

namespace LinuxPlatform {

LazySound::LazySound(std::function<std::unique_ptr<SoundToolkit>()> make) : make_(std::move(make)) {}

Platform::Subscription LazySound::prepare() {
    return toolkit().prepare();
}

bool LazySound::hasInputDevice() {
    return toolkit().hasInputDevice();
}

Platform::Subscription LazySound::observeInputDevice(std::function<void(bool isThere)> observer) {
    return toolkit().observeInputDevice(std::move(observer));
}

std::shared_ptr<Platform::AudioEngine> LazySound::makeEngine() {
    return toolkit().makeEngine();
}

std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
LazySound::openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) {
    return toolkit().openFileForWriting(path, settings);
}

std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
LazySound::makePlayer(const std::string& path) {
    return toolkit().makePlayer(path);
}

void LazySound::setSuspended(bool isSuspended) {
    if (toolkit_) {
        toolkit_->setSuspended(isSuspended);
    }
}

SoundToolkit& LazySound::toolkit() {
    if (!toolkit_) {
        toolkit_ = make_();
    }
    return *toolkit_;
}

} // namespace LinuxPlatform
