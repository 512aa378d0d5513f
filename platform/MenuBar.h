#pragma once

#include <optional>
#include <string>

namespace Platform {

/// The bar of the screen that holds the status item: here, the desktop's panel. Main thread only.
class MenuBar {
public:
    /// The owner while one of the panel's own pop-ups is open.
    static constexpr const char* controlCenter = "com.apple.controlcenter";

    virtual ~MenuBar() = default;

    /// The bundle identifier of the app that the bar belongs to now; absent when it is nobody's.
    virtual std::optional<std::string> owningApplication() = 0;
    /// That of the app that has the keyboard.
    virtual std::optional<std::string> frontmostApplication() = 0;
};

} // namespace Platform
