#include "platform/linux/desktopicons/XfceDesktop.h"

#include <QDBusVariant>

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto unsetStyle = "default";
constexpr auto noIcons = "0";
constexpr auto fileIcons = "2";

QDBusMessage askXfconf(DesktopBus& bus, const QString& method, const QVariantList& furtherArguments = {}) {
    return bus.call(QStringLiteral("org.xfce.Xfconf"), QStringLiteral("/org/xfce/Xfconf"),
                    QStringLiteral("org.xfce.Xfconf"), method,
                    QVariantList{QStringLiteral("xfce4-desktop"), QStringLiteral("/desktop-icons/style")} +
                        furtherArguments);
}

std::optional<int> numberIn(const std::string& style) {
    bool isNumber = false;
    const auto number = QString::fromStdString(style).toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

} // namespace

XfceDesktop::XfceDesktop(DesktopBus& bus, EarlierValue earlier) : bus_(bus), earlier_(std::move(earlier)) {}

DesktopIcons XfceDesktop::icons(const DesktopScene& scene) {
    if (!scene.hasName("org.xfce.xfdesktop") && scene.desktopWindowOf(windowClass()) == nullptr) {
        return DesktopIcons::absent;
    }
    const auto current = style();
    if (!current) {
        return DesktopIcons::unknown;
    }
    return *current == noIcons ? DesktopIcons::hidden : DesktopIcons::shown;
}

void XfceDesktop::hide(const DesktopScene&) {
    if (const auto current = style()) {
        earlier_.keep(*current);
        if (setStyle(noIcons) == false) {
            earlier_.forget();
        }
    }
}

bool XfceDesktop::show(const DesktopScene&) {
    auto style = earlier_.get().value_or(fileIcons);
    if (style != unsetStyle && numberIn(style).value_or(0) == 0) {
        style = std::string(fileIcons);
    }
    const bool isShown = setStyle(style) == true;
    if (isShown) {
        earlier_.forget();
    }
    return isShown;
}

std::optional<std::string> XfceDesktop::style() {
    const auto answer = askXfconf(bus_, QStringLiteral("GetProperty"));
    if (!isReply(answer)) {
        const bool isUnset = answer.errorName() == QStringLiteral("org.xfce.Xfconf.Error.PropertyNotFound") ||
                             answer.errorName() == QStringLiteral("org.xfce.Xfconf.Error.ChannelNotFound");
        return isUnset ? std::optional<std::string>(unsetStyle) : std::nullopt;
    }
    const auto value = answer.arguments().value(0).value<QDBusVariant>().variant();
    bool isNumber = false;
    const auto number = value.toInt(&isNumber);
    return isNumber ? std::optional(std::to_string(number)) : std::nullopt;
}

std::optional<bool> XfceDesktop::setStyle(const std::string& style) {
    if (const auto number = numberIn(style)) {
        return isDone(
            askXfconf(bus_, QStringLiteral("SetProperty"), {QVariant::fromValue(QDBusVariant(*number))}));
    }
    return isDone(askXfconf(bus_, QStringLiteral("ResetProperty"), {false}));
}

} // namespace LinuxPlatform
