#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/windows/kwin/KWinScripts.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace LinuxPlatform {

/// What the scripts in KWin call on the session bus. A script that has reported something asks at once
/// whether there is something to do, and waits a moment for that; so what is wanted soon after a report gets
/// there with one message. Main thread only.
class KWinListener {
public:
    using OnReport = std::function<void(const QString& sender, const QByteArray& text)>;

    /// `queue` outlives this object. `sender` is a unique name on the bus.
    KWinListener(const QDBusConnection& bus, Platform::MainQueue& queue, OnReport onReport);
    /// Whoever waits is told that there is nothing to do.
    ~KWinListener();
    KWinListener(const KWinListener&) = delete;
    KWinListener& operator=(const KWinListener&) = delete;

    KWinScripts::Address address() const;
    /// Gives something to do to the script that waits. False where none of this sender's with this load does.
    bool answer(const QString& sender, std::uint64_t load, const QByteArray& text);

private:
    class Object;

    struct Question {
        QDBusMessage message;
        QString sender;
        std::uint64_t load = 0;
        Platform::MainQueue::Seconds askedAt;
    };

    void hold(const QDBusMessage& message);
    void reply(const QString& text);

    QDBusConnection bus_;
    Platform::MainQueue& queue_;
    std::optional<Question> question_;
    std::uint64_t lastQuestion_ = 0;
    std::unique_ptr<Object> object_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
