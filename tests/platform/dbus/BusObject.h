#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QString>

#include <utility>

namespace TestSupport {

/// A program's object on a bus, as far as a test plays it: it is there, under the program's name, for as long
/// as it lives.
class BusObject : public QDBusVirtualObject {
public:
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;
    ~BusObject() override {
        leave();
        bus_.unregisterObject(path_);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    /// Lets go of the name, and lives on.
    void leave() {
        if (!service_.isEmpty()) {
            bus_.unregisterService(service_);
        }
    }

    /// Takes the name, again after `leave`.
    void claim() {
        if (!service_.isEmpty()) {
            bus_.registerService(service_);
        }
    }

protected:
    /// Without a `service` the object stands beside another one that has the name.
    BusObject(QDBusConnection bus, QString service, QString path,
              QDBusConnection::VirtualObjectRegisterOption paths = QDBusConnection::SingleNode)
        : bus_(std::move(bus)),
          service_(std::move(service)),
          path_(std::move(path)) {
        bus_.registerVirtualObject(path_, this, paths);
        claim();
    }

    const QString& service() const { return service_; }
    QDBusConnection& bus() { return bus_; }
    const QDBusConnection& bus() const { return bus_; }
    const QString& path() const { return path_; }

private:
    QDBusConnection bus_;
    QString service_;
    QString path_;
};

} // namespace TestSupport
