#pragma once

#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TestSupport {

/// A camera of the virtual desktop's PipeWire. Ending it unplugs it.
class VirtualCamera {
public:
    VirtualCamera(const TemporaryFolder& folder, const std::string& name, const std::string& description,
                  const std::string& formats, const std::vector<std::string>& options = {})
        : log_(folder.path() / (name + ".log")),
          process_(command(log_, name, description, formats, options)) {}

    std::string log() const { return readFile(log_); }

    bool isStreaming() const { return log().ends_with("streaming\n"); }
    void unplug() { process_.end(SIGTERM); }
    void signal(int number) { kill(process_.id(), number); }

private:
    static std::vector<std::string> command(const std::filesystem::path& log, const std::string& name,
                                            const std::string& description, const std::string& formats,
                                            const std::vector<std::string>& options) {
        std::filesystem::remove(log);
        std::vector<std::string> command{VIRTUAL_CAMERA, name, description, formats, "log=" + log.string()};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    std::filesystem::path log_;
    ChildProcess process_;
};

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
};

inline Rgb pixelOf(const Platform::Picture& picture, int x, int y) {
    const auto at = static_cast<std::size_t>(y * picture.width + x) * 4;
    const auto part = [&](std::size_t offset) { return static_cast<int>(picture.pixels[at + offset]); };
    return {part(2), part(1), part(0)};
}

inline bool isNear(const Rgb& one, const Rgb& other, int tolerance = 24) {
    return std::abs(one.red - other.red) <= tolerance && std::abs(one.green - other.green) <= tolerance &&
           std::abs(one.blue - other.blue) <= tolerance;
}

/// Whether these are the four bars that virtual cameras show, looked at along the top.
inline bool showsBars(const Platform::Picture& picture) {
    const auto at = [&](int eighth) {
        return pixelOf(picture, picture.width * eighth / 8, picture.height / 8);
    };
    return isNear(at(1), {255, 0, 0}) && isNear(at(3), {0, 255, 0}) && isNear(at(5), {0, 0, 255}) &&
           isNear(at(7), {128, 128, 128});
}

/// A receiver that keeps what it receives.
class RecordingPhotoReceiver : public Platform::PhotoReceiver {
public:
    std::optional<Platform::CapturedPhoto> photo() const {
        const std::scoped_lock lock(mutex_);
        return photo_;
    }
    int calls() const {
        const std::scoped_lock lock(mutex_);
        return calls_;
    }

    void didFinishProcessingPhoto(const Platform::CapturedPhoto& photo) override {
        const std::scoped_lock lock(mutex_);
        photo_ = photo;
        ++calls_;
    }

private:
    mutable std::mutex mutex_;
    std::optional<Platform::CapturedPhoto> photo_;
    int calls_ = 0;
};

} // namespace TestSupport
