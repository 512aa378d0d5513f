#pragma once

#include "platform/linux/screenwatch/CaptureWatch.h"

#include <bitset>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <optional>

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
/// has changed. A screenshot reads once, a magnifier or a colour picker little at a time. What reads five
/// times a second, or asks to be told of every change of the screen and then reads, is known within half a
/// second, what is slower after a second.
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

    /// The program asked to be told whenever something changes anywhere on the screen.
    void followScreen(Time time);

    /// Whether it is worth asking `isCapture` before somebody else does.
    bool isConspicuous() const { return isCapture_ || isFollower_; }

    /// `followsChanges`: the program asks the server what has changed on the screen.
    bool isCapture(Time now, bool followsChanges);

    /// Whether any of it still matters. That the program asked for changes does for as long as it is there.
    bool isOver(Time now) const { return !isCapture_ && !followsScreen_ && now - last_ > memory; }

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
    void noteLargeRead(Time time);
    void noteFollowedRead(Time time);
    void forgetBefore(Time time);

    int width_;
    int height_;
    std::map<std::chrono::seconds, Second> seconds_;
    /// The large reads of the last moment.
    std::deque<Time> largeReads_;
    bool followsScreen_ = false;
    std::optional<Time> firstFollowedRead_;
    /// It has read again and again since it asked for changes.
    bool isFollower_ = false;
    Time last_{};
    bool isCapture_ = false;
};

} // namespace LinuxPlatform
