#include "platform/linux/desktopicons/PcmanfmQtDesktop.h"

#include <QDBusVariant>

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto busName = "org.pcmanfm.PCManFM";

QString service() {
    return QString::fromLatin1(busName);
}

QString path() {
    return QStringLiteral("/Application");
}

QString interface() {
    return QStringLiteral("org.pcmanfm.Application");
}

} // namespace

PcmanfmQtDesktop::PcmanfmQtDesktop(DesktopBus& bus, EarlierValue earlier, StartDesktopProgram start)
    : bus_(bus),
      earlier_(std::move(earlier)),
      start_(std::move(start)) {}

DesktopIcons PcmanfmQtDesktop::icons(const DesktopScene& scene) {
    if (scene.hasName(busName)) {
        const auto answer =
            bus_.call(service(), path(), QStringLiteral("org.freedesktop.DBus.Properties"),
                      QStringLiteral("Get"), {interface(), QStringLiteral("desktopManagerEnabled")});
        const auto isOn = answer.arguments().value(0).value<QDBusVariant>().variant();
        if (!isReply(answer) || isOn.metaType() != QMetaType::fromType<bool>()) {
            return DesktopIcons::unknown;
        }
        if (isOn.toBool()) {
            return DesktopIcons::shown;
        }
    }
    return earlier_.isOfThisSession() ? DesktopIcons::hidden : DesktopIcons::absent;
}

void PcmanfmQtDesktop::hide(const DesktopScene&) {
    const auto process = bus_.process(service());
    const auto profile = process ? profileArguments(*process) : std::vector<std::string>{};
    earlier_.keep(profile.empty() ? std::string() : profile.front());
    if (switchDesktop(false) == false) {
        earlier_.forget();
    }
}

bool PcmanfmQtDesktop::show(const DesktopScene& scene) {
    bool isShown = scene.hasName(busName) && switchDesktop(true) == true;
    // Without a desktop and windows it ends, which it may have done since it was looked for.
    if (!isShown && !bus_.process(service())) {
        isShown = startDesktop();
    }
    if (isShown) {
        earlier_.forget();
    }
    return isShown;
}

bool PcmanfmQtDesktop::startDesktop() {
    std::vector<std::string> command{"pcmanfm-qt", "--desktop"};
    if (const auto profile = earlier_.get(); profile && !profile->empty()) {
        command.push_back(*profile);
    }
    return start_(command);
}

std::optional<bool> PcmanfmQtDesktop::switchDesktop(bool isOn) {
    return isDone(bus_.call(service(), path(), interface(), QStringLiteral("desktopManager"), {isOn}));
}

} // namespace LinuxPlatform
