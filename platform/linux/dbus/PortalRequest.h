#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/dbus/BoundedCall.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariant>

#include <chrono>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// One question that the desktop portal puts to the user (org.freedesktop.portal.Request). Its end withdraws
/// nothing unless it is told to, but nobody is told any more. Main thread only; nothing here waits.
class PortalRequest {
public:
    /// How long the portal may take to say that it will ask. The user may take any time.
    static constexpr std::chrono::milliseconds patience{5000};

    struct Question {
        QString interface;
        QString method;
        /// Without the options, which come last.
        QVariantList arguments;
        QVariantMap options;
    };

    enum class Outcome {
        yes,
        no,
        /// The dialog ended in another way.
        noAnswer,
        /// The portal left the bus, and its dialog went with it.
        departed,
        /// There is no portal, or it does not ask.
        notAsked,
        /// The portal has not said in time that it will ask. It may do so yet, unless `withdraw` is called.
        silent,
    };

    /// `results` are what the method says that they are, empty unless the outcome is yes.
    using Answered = std::function<void(Outcome outcome, const QVariantMap& results)>;

    /// `answered` may end the request. `queue` outlives it.
    PortalRequest(const QDBusConnection& bus, Platform::MainQueue& queue, Question question,
                  Answered answered);

    /// Takes the question from the screen. Nobody is told any more.
    void withdraw();

private:
    PortalRequest(const QDBusConnection& bus, Platform::MainQueue& queue, Question question,
                  const QString& token, Answered answered);
    void receiveReply(const std::optional<QDBusMessage>& reply);
    void receive(const QDBusMessage& response);
    void answer(Outcome outcome, const QVariantMap& results = {});

    QDBusConnection bus_;
    QString path_;
    Answered answered_;
    DBusSignal response_;
    QDBusServiceWatcher departure_;
    QObject context_;
    /// Empty where there is no bus.
    std::optional<BoundedCall> call_;
};

} // namespace LinuxPlatform
