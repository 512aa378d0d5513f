#pragma once

#include <string>

namespace Platform {

/// Where a picture is and how it wants to be drawn. Pixels are made by whoever draws it, at the scale of its
/// screen.
struct Image {
    /// The absolute path of an image file, or the name of an icon in the desktop's icon theme.
    std::string source;
    /// In points; 0 for the picture's own size.
    double width = 0;
    double height = 0;
    /// Only the shape counts: the surroundings give the colour.
    bool isTemplate = false;
    std::string accessibilityDescription;

    bool operator==(const Image&) const = default;
};

} // namespace Platform
