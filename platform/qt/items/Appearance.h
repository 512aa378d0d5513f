#pragma once

namespace QtPlatform {

/// How the desktop wants views to look and to move.
struct Appearance {
    bool isDark = false;
    bool isContrastHigh = false;
    bool isMotionReduced = false;

    bool operator==(const Appearance&) const = default;
};

} // namespace QtPlatform
