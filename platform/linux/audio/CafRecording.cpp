#include "platform/linux/audio/CafRecording.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace LinuxPlatform {

std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
CafRecording::create(const std::string& path, const Platform::AudioFormat& format) {
    SF_INFO info{};
    const bool isSane = format.sampleRate > 0 && format.sampleRate <= std::numeric_limits<int>::max() &&
                        format.channelCount <= std::numeric_limits<int>::max();
    info.samplerate = isSane ? static_cast<int>(format.sampleRate) : 0;
    info.channels = isSane ? static_cast<int>(format.channelCount) : 0;
    info.format = SF_FORMAT_CAF | SF_FORMAT_FLOAT | SF_ENDIAN_CPU;
    if (sf_format_check(&info) == 0) {
        return Platform::AudioError{"no recording can have this format"};
    }
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        return Platform::AudioError{path + ": " + std::strerror(errno)};
    }
    File file(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE), &sf_close);
    if (!file) {
        // The library has closed the descriptor.
        ::unlink(path.c_str());
        return Platform::AudioError{path + ": " + sf_strerror(nullptr)};
    }
    return std::unique_ptr<Platform::AudioFile>(new CafRecording(std::move(file), format));
}

bool CafRecording::write(const Platform::AudioPCMBuffer& buffer) {
    if (buffer.floatChannelData == nullptr || buffer.format != format_) {
        return false;
    }
    const auto frames = static_cast<sf_count_t>(buffer.frameLength);
    return sf_writef_float(file_.get(), buffer.floatChannelData, frames) == frames;
}

} // namespace LinuxPlatform
