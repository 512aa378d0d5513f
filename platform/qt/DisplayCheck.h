#pragma once

#include <QByteArray>

namespace QtPlatform {

/// Whether a QGuiApplication that is made shows itself through X. It does, also where the user prefers
/// Wayland for other programs, unless another platform than these two was chosen by hand.
bool showsItselfThroughX();

/// While it lives, a QGuiApplication that is made shows itself as `showsItselfThroughX` says.
class PreferredDisplay {
public:
    PreferredDisplay();
    ~PreferredDisplay();
    PreferredDisplay(const PreferredDisplay&) = delete;
    PreferredDisplay& operator=(const PreferredDisplay&) = delete;

private:
    bool isOurs_;
    QByteArray before_;
};

} // namespace QtPlatform
