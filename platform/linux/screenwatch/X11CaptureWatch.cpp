#include "platform/linux/screenwatch/X11CaptureWatch.h"

#include <utility>

namespace LinuxPlatform {

std::unique_ptr<X11CaptureWatch> X11CaptureWatch::open(Platform::Log& log, Reopening::Now now) {
    std::unique_ptr<X11CaptureWatch> watch(new X11CaptureWatch(log, std::move(now)));
    watch->openReaders();
    if (!watch->readers_) {
        watch->lose();
    }
    return watch;
}

X11CaptureWatch::X11CaptureWatch(Platform::Log& log, Reopening::Now now) : log_(log), now_(std::move(now)) {}

std::optional<bool> X11CaptureWatch::isScreenCaptured() {
    if (readers_) {
        const auto answer = readers_->isCapture();
        if (readers_->isAlive()) {
            return answer == false && isNew() ? std::nullopt : answer;
        }
        lose();
    }
    if (reopening_.isDue(now_())) {
        openAgain();
    }
    return std::nullopt;
}

void X11CaptureWatch::lose() {
    readers_.reset();
    if (reopening_.broke(now_())) {
        log_.writeLine("Curtain: the X server does not tell who reads the screen; it will be asked again");
    }
}

void X11CaptureWatch::openReaders() {
    readers_ = X11ScreenReaders::open(X11Connection::open(), X11ScreenReaders::usualBytesATurn,
                                      [this] { tellNews(); });
}

void X11CaptureWatch::openAgain() {
    reopening_.tried(now_());
    openReaders();
    openedAgain_ = now_();
}

bool X11CaptureWatch::isNew() const {
    return openedAgain_ && now_() - *openedAgain_ < memory;
}

} // namespace LinuxPlatform
