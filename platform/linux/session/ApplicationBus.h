#pragma once

#include "platform/linux/session/CallRate.h"
#include "platform/linux/session/NameOwner.h"

#include <QDBusConnection>
#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace LinuxPlatform {

/// Makes this process the only one of its program in the user's session, and lets others reach it: the
/// interface org.freedesktop.Application of the Desktop Entry standard 1.5 at the program's name on the
/// session bus. Main thread only.
class ApplicationBus {
public:
    enum class Claim {
        /// This process is the one.
        first,
        /// Another one is, and has been asked to open.
        otherOpened,
        /// Another one is, and does not answer.
        otherSilent,
        /// One in another session of the user has the name, or another program: until that ends, nobody can
        /// reach this process by it.
        otherSession,
        stranger,
        /// There is no session bus to agree on.
        noBus,
    };

    struct Actions {
        std::function<void()> open;
        /// By the names under which the desktop entry lists them.
        std::map<std::string, std::function<void()>> named;
    };

    /// Who a process is that has the name.
    using Judge = std::function<NameOwner(std::uint32_t process)>;

    /// `name` is the program's bus name, such as "com.curtain.Curtain".
    ApplicationBus(QDBusConnection bus, QString name, Judge judge, CallRate rate = CallRate());
    ~ApplicationBus();
    ApplicationBus(const ApplicationBus&) = delete;
    ApplicationBus& operator=(const ApplicationBus&) = delete;

    /// Asks a running instance to open, or else becomes it. Waits for the answer, with a deadline. Another
    /// program and another session are asked for nothing.
    Claim claim();
    /// What calls do from now on. Calls that came before are done now, in their order. More calls than a
    /// person makes are refused.
    void setActions(Actions actions);

private:
    class Object;

    bool waitForName();

    QDBusConnection bus_;
    QString name_;
    Judge judge_;
    std::unique_ptr<Object> object_;
};

} // namespace LinuxPlatform
