#pragma once

#include "platform/Log.h"
#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/DesktopIconsRunner.h"
#include "platform/linux/desktopicons/X11DesktopWindows.h"
#include "platform/linux/session/SessionEnvironment.h"
#include "platform/linux/system/FileUserDefaults.h"
#include "platform/linux/system/PosixProcessRunner.h"

#include <filesystem>

namespace LinuxPlatform {

/// The runner of this session, with all desktops that are known. Main thread only.
class LinuxDesktopIcons : public Platform::ProcessRunner {
public:
    /// `x11` is null in a session without an X server. Earlier settings are kept in `stateFolder`. The
    /// services outlive this object.
    LinuxDesktopIcons(const SessionEnvironment& environment, X11Connection* x11, const QDBusConnection& bus,
                      Platform::MainQueue& clock, Platform::Log& log,
                      const std::filesystem::path& stateFolder);

    std::string run(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    DesktopIconsRunner::Desktops makeDesktops();
    DesktopScene look();

    SessionEnvironment environment_;
    PosixProcessRunner programs_;
    FileUserDefaults state_;
    DesktopBus bus_;
    X11Connection* x11_;
    std::optional<X11DesktopWindows> windows_;
    DesktopIconsRunner runner_;
};

} // namespace LinuxPlatform
