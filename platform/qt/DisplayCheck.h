#pragma once

#include <optional>
#include <string>

namespace QtPlatform {

/// One sentence for the user when there is no display that a QApplication could open; it would abort. To be
/// asked before one is made.
std::optional<std::string> missingDisplay();

/// While it lives, a QApplication that is made shows itself through X, also where there is a Wayland
/// compositor beside it. The user's own choice of a platform wins.
class PreferredDisplay {
public:
    PreferredDisplay();
    ~PreferredDisplay();
    PreferredDisplay(const PreferredDisplay&) = delete;
    PreferredDisplay& operator=(const PreferredDisplay&) = delete;

private:
    bool isOurs_;
};

} // namespace QtPlatform
