#include "platform/linux/desktopicons/LinuxDesktopIcons.h"

#include "platform/linux/desktopicons/CajaDesktop.h"
#include "platform/linux/desktopicons/GnomeDesktop.h"
#include "platform/linux/desktopicons/NemoDesktop.h"
#include "platform/linux/desktopicons/PcmanfmDesktop.h"
#include "platform/linux/desktopicons/PcmanfmQtDesktop.h"
#include "platform/linux/desktopicons/PlasmaDesktop.h"
#include "platform/linux/desktopicons/XfceDesktop.h"
#include "platform/linux/session/SessionMark.h"

namespace LinuxPlatform {

LinuxDesktopIcons::LinuxDesktopIcons(const SessionEnvironment& environment, X11Connection* x11,
                                     const QDBusConnection& bus, Platform::MainQueue& clock,
                                     Platform::Log& log, const std::filesystem::path& stateFolder)
    : environment_(environment),
      state_(stateFolder, log),
      bus_(bus, clock),
      x11_(x11),
      runner_(programs_, clock, makeDesktops(), [this] { return look(); }) {
    if (x11_ != nullptr) {
        windows_.emplace(*x11_);
    }
}

std::string LinuxDesktopIcons::run(const std::string& path, const std::vector<std::string>& arguments) {
    return runner_.run(path, arguments);
}

DesktopIconsRunner::Desktops LinuxDesktopIcons::makeDesktops() {
    const auto earlier = [this, session = sessionMark(environment_)](const char* desktop) {
        return EarlierValue(state_, std::string("desktop-icons.") + desktop, session);
    };
    DesktopIconsRunner::Desktops desktops;
    desktops.push_back(std::make_unique<XfceDesktop>(bus_, earlier("xfce")));
    desktops.push_back(std::make_unique<NemoDesktop>(earlier("nemo")));
    desktops.push_back(std::make_unique<CajaDesktop>(earlier("caja"), startDesktopProgram));
    desktops.push_back(std::make_unique<PcmanfmDesktop>(programs_, earlier("pcmanfm"), startDesktopProgram));
    desktops.push_back(std::make_unique<PcmanfmQtDesktop>(bus_, earlier("pcmanfm-qt"), startDesktopProgram));
    desktops.push_back(std::make_unique<GnomeDesktop>(bus_, earlier("gnome")));
    desktops.push_back(std::make_unique<PlasmaDesktop>(bus_, earlier("plasma")));
    return desktops;
}

DesktopScene LinuxDesktopIcons::look() {
    DesktopScene scene;
    scene.busNames = bus_.names();
    const bool hasServer = windows_ && x11_->isAlive();
    if (hasServer) {
        scene.desktopWindows = windows_->list();
    }
    // Beside a Wayland compositor the X server is only for guests.
    scene.isEveryWindowKnown = hasServer && environment_.kind == SessionKind::x11;
    return scene;
}

} // namespace LinuxPlatform
