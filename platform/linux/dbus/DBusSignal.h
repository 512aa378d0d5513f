#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace LinuxPlatform {

/// Hands the messages of one D-Bus signal to a handler, on the thread that made this object, while it lives.
class DBusSignal : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage&)>;

    /// `sender` is the bus name of the only sender that counts; it may come and go.
    DBusSignal(QDBusConnection bus, const QString& sender, const QString& path, const QString& interface,
               const QString& name, Handler handler);

private:
    Q_SLOT void receive(const QDBusMessage& message);

    Handler handler_;
};

} // namespace LinuxPlatform
