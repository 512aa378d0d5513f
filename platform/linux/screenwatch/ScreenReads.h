#pragma once

#include "platform/linux/screenwatch/CaptureWatch.h"

#include <bitset>
#include <chrono>
#include <map>

namespace LinuxPlatform {

/// A part of the screen, in pixels; it may reach beyond.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Judges from what one program reads of the screen's picture whether it captures the screen.
///
/// A capture reads again and again, and much: a good part of the screen at a time, strip by strip, or what
/// has changed. A screenshot reads once, a magnifier or a colour picker little at a time.
class ScreenReads {
public:
    using Time = std::chrono::milliseconds;

    ScreenReads(int screenWidth, int screenHeight) : width_(screenWidth), height_(screenHeight) {}

    /// For the reads from now on: monitors come and go.
    void setScreenSize(int width, int height) {
        width_ = width;
        height_ = height;
    }

    /// Times do not run backwards.
    void add(Time time, const ScreenArea& area);

    /// `followsChanges`: the program asks the server what has changed on the screen.
    bool isCapture(Time now, bool followsChanges);

    /// Whether any of it still matters.
    bool isOver(Time now) const { return !isCapture_ && now - last_ > memory; }

    /// How long a capture may pause.
    static constexpr Time memory = CaptureWatch::memory;

private:
    static constexpr std::size_t columns = 16;
    static constexpr std::size_t rows = 9;

    /// What was read within one second.
    struct Second {
        Time first{};
        Time last{};
        /// Where strips were read, in cells of the screen.
        std::bitset<columns * rows> strips;
        bool hasLargeRead = false;
    };

    static bool isMuch(const Second& second);
    void forgetBefore(Time time);

    int width_;
    int height_;
    std::map<std::chrono::seconds, Second> seconds_;
    Time last_{};
    bool isCapture_ = false;
};

} // namespace LinuxPlatform
