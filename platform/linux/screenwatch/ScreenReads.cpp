#include "platform/linux/screenwatch/ScreenReads.h"

#include <algorithm>
#include <optional>

namespace LinuxPlatform {
namespace {

/// The part of the screen, as one in so many, that a magnifier never reads at a time.
constexpr int largePart = 8;
/// Whoever reads wider strips than the screen's width divided by this does not follow the pointer.
constexpr int stripPart = 2;
/// In cells: half of the screen, read in strips within a second.
constexpr std::size_t muchInStrips = 72;
/// A screenshot may fall into two seconds.
constexpr ScreenReads::Time longerThanAScreenshot = std::chrono::seconds(1);
/// So many large reads in so short a time are those of a capture. Magnifiers that read the whole screen do it
/// four times a second.
constexpr std::size_t quickReads = 5;
constexpr ScreenReads::Time quick = std::chrono::milliseconds(900);
/// Nor does a program that reads the screen once do it in pieces for so long.
constexpr ScreenReads::Time longerThanOneLook = std::chrono::milliseconds(250);
/// Whoever follows the screen and reads it once more after that has not only begun to.
constexpr ScreenReads::Time longerThanABeginning = std::chrono::milliseconds(100);

} // namespace

void ScreenReads::add(Time time, const ScreenArea& area) {
    const int left = std::max(area.x, 0);
    const int top = std::max(area.y, 0);
    const int right = std::min(area.x + area.width, width_);
    const int bottom = std::min(area.y + area.height, height_);
    if (left >= right || top >= bottom) {
        return;
    }
    last_ = std::max(last_, time);
    forgetBefore(time - memory);
    const auto [place, isNew] = seconds_.try_emplace(std::chrono::floor<std::chrono::seconds>(time));
    auto& second = place->second;
    if (isNew) {
        second.first = time;
    }
    second.last = time;
    const int width = right - left;
    const int height = bottom - top;
    noteFollowedRead(time);
    if (width * height >= width_ * height_ / largePart) {
        second.hasLargeRead = true;
        noteLargeRead(time);
    }
    if (width < width_ / stripPart) {
        return;
    }
    const auto cell = [](int pixel, int length, std::size_t cells) {
        return static_cast<std::size_t>(pixel) * cells / static_cast<std::size_t>(length);
    };
    for (auto y = cell(top, height_, rows); y <= cell(bottom - 1, height_, rows); ++y) {
        for (auto x = cell(left, width_, columns); x <= cell(right - 1, width_, columns); ++x) {
            second.strips.set(y * columns + x);
        }
    }
}

void ScreenReads::followScreen(Time time) {
    followsScreen_ = true;
    last_ = std::max(last_, time);
}

void ScreenReads::noteLargeRead(Time time) {
    largeReads_.push_back(time);
    while (largeReads_.front() < time - quick) {
        largeReads_.pop_front();
    }
    isCapture_ =
        isCapture_ || (largeReads_.size() >= quickReads && time - largeReads_.front() >= longerThanOneLook);
}

void ScreenReads::noteFollowedRead(Time time) {
    if (!followsScreen_) {
        return;
    }
    if (!firstFollowedRead_ || time - *firstFollowedRead_ > memory) {
        firstFollowedRead_ = time;
    }
    isFollower_ = isFollower_ || time - *firstFollowedRead_ >= longerThanABeginning;
}

bool ScreenReads::isCapture(Time now, bool followsChanges) {
    forgetBefore(now - memory);
    std::optional<Time> first;
    Time last{};
    for (const auto& [number, second] : seconds_) {
        if (followsChanges || isMuch(second)) {
            first = first.value_or(second.first);
            last = second.last;
        }
    }
    const bool isLong = first && last - *first >= longerThanAScreenshot;
    if (isLong || (followsChanges && isFollower_)) {
        isCapture_ = true;
    } else if (!followsChanges && now - last_ > memory) {
        isCapture_ = false;
    }
    return isCapture_;
}

bool ScreenReads::isMuch(const Second& second) {
    return second.hasLargeRead || second.strips.count() >= muchInStrips;
}

void ScreenReads::forgetBefore(Time time) {
    while (!seconds_.empty() && seconds_.begin()->second.last < time) {
        seconds_.erase(seconds_.begin());
    }
}

} // namespace LinuxPlatform
