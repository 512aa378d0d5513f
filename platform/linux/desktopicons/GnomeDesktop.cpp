#include "platform/linux/desktopicons/GnomeDesktop.h"

#include <QDBusArgument>
#include <QStringList>
#include <QVariantMap>

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto busName = "org.gnome.Shell";
/// As the shell numbers them.
constexpr double stateOfWorkingExtension = 1;

const QStringList& knownExtensions() {
    static const QStringList identifiers{
        QStringLiteral("ding@rastersoft.com"),
        QStringLiteral("gtk4-ding@smedius.gitlab.com"),
        QStringLiteral("desktopicons-neo@darkdemon"),
        QStringLiteral("desktop-icons@csoriano"),
    };
    return identifiers;
}

/// What an extension calls itself tells, and nothing else does.
bool seemsToDrawIcons(const QString& identifier, const QVariantMap& extension) {
    const auto words = identifier + QLatin1Char(' ') + extension.value(QStringLiteral("name")).toString();
    return words.contains(QLatin1String("desktop"), Qt::CaseInsensitive) &&
           words.contains(QLatin1String("icon"), Qt::CaseInsensitive);
}

bool isAtWork(const QVariantMap& extension) {
    return extension.value(QStringLiteral("state")).toDouble() == stateOfWorkingExtension;
}

QStringList linesIn(const std::string& text) {
    return QString::fromStdString(text).split(QLatin1Char('\n'));
}

QDBusMessage askShell(DesktopBus& bus, const QString& method, const QVariantList& arguments) {
    return bus.call(QString::fromLatin1(busName), QStringLiteral("/org/gnome/Shell"),
                    QStringLiteral("org.gnome.Shell.Extensions"), method, arguments);
}

} // namespace

GnomeDesktop::GnomeDesktop(DesktopBus& bus, EarlierValue earlier) : bus_(bus), earlier_(std::move(earlier)) {}

DesktopIcons GnomeDesktop::icons(const DesktopScene& scene) {
    if (!scene.hasName(busName)) {
        return DesktopIcons::absent;
    }
    const auto installed = extensions();
    if (!installed) {
        return DesktopIcons::unknown;
    }
    for (const auto& [identifier, isAtWork] : installed->known) {
        if (isAtWork) {
            forgetAnotherSession(identifier);
            return DesktopIcons::shown;
        }
    }
    return installed->isAnotherAtWork && !scene.isEveryWindowKnown ? DesktopIcons::unknown
                                                                   : DesktopIcons::hidden;
}

void GnomeDesktop::forgetAnotherSession(const QString& enabled) {
    const auto earlier = earlier_.get();
    if (earlier && !earlier_.isOfThisSession() && linesIn(*earlier).contains(enabled)) {
        earlier_.forget();
    }
}

void GnomeDesktop::hide(const DesktopScene&) {
    const auto installed = extensions();
    if (!installed) {
        return;
    }
    const auto before = earlier_.isOfThisSession() ? earlier_.get() : std::nullopt;
    const auto disabledBefore = linesIn(before.value_or(""));
    QStringList atWork;
    QStringList kept;
    for (const auto& [identifier, isAtWork] : installed->known) {
        if (isAtWork) {
            atWork.append(identifier);
        }
        // Some may have been disabled before the others came.
        if (isAtWork || disabledBefore.contains(identifier)) {
            kept.append(identifier);
        }
    }
    earlier_.keep(kept.join(QLatin1Char('\n')).toStdString());
    bool isRefused = true;
    for (const auto& identifier : atWork) {
        isRefused = call(QStringLiteral("DisableExtension"), identifier) == false && isRefused;
    }
    if (isRefused) {
        earlier_.replace(before);
    }
}

bool GnomeDesktop::show(const DesktopScene&) {
    const auto earlier = earlier_.get();
    if (!earlier) {
        return false;
    }
    bool isShown = true;
    for (const auto& identifier : linesIn(*earlier)) {
        if (knownExtensions().contains(identifier)) {
            isShown = call(QStringLiteral("EnableExtension"), identifier) == true && isShown;
        }
    }
    if (isShown) {
        earlier_.forget();
    }
    return isShown;
}

std::optional<GnomeDesktop::Extensions> GnomeDesktop::extensions() {
    const auto answer = askShell(bus_, QStringLiteral("ListExtensions"), {});
    const auto list = answer.arguments().value(0);
    if (!isReply(answer) || list.metaType() != QMetaType::fromType<QDBusArgument>() ||
        list.value<QDBusArgument>().currentSignature() != QStringLiteral("a{sa{sv}}")) {
        return std::nullopt;
    }
    const auto all = qdbus_cast<QMap<QString, QVariantMap>>(list.value<QDBusArgument>());
    Extensions found;
    for (auto extension = all.constBegin(); extension != all.constEnd(); ++extension) {
        const auto& identifier = extension.key();
        if (knownExtensions().contains(identifier)) {
            found.known[identifier] = isAtWork(*extension);
        } else if (isAtWork(*extension) && seemsToDrawIcons(identifier, *extension)) {
            found.isAnotherAtWork = true;
        }
    }
    return found;
}

std::optional<bool> GnomeDesktop::call(const QString& method, const QString& extension) {
    const auto answer = askShell(bus_, method, {extension});
    return isReply(answer) ? answer.arguments().value(0).toBool() : isDone(answer);
}

} // namespace LinuxPlatform
