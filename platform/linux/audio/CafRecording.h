#pragma once

#include "platform/AudioFile.h"

#include <sndfile.h>

#include <memory>
#include <string>
#include <variant>

namespace LinuxPlatform {

/// A file in Apple's Core Audio Format with 32-bit float samples in this computer's byte order.
class CafRecording : public Platform::AudioFile {
public:
    /// Makes the file for this user alone; never follows a link, nor writes into a file that is there.
    static std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    create(const std::string& path, const Platform::AudioFormat& format);

    bool write(const Platform::AudioPCMBuffer& buffer) override;

private:
    using File = std::unique_ptr<SNDFILE, int (*)(SNDFILE*)>;

    CafRecording(File file, const Platform::AudioFormat& format) : file_(std::move(file)), format_(format) {}

    File file_;
    Platform::AudioFormat format_;
};

} // namespace LinuxPlatform
