#include "platform/linux/hotkeys/kglobalaccel/KGlobalAccelHotKeyService.h"

#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/HandDrivenQueue.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QList>
#include <QThread>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

/// KDE's service as far as it grants shortcuts. It has much to ask itself before it answers.
class BusyAccelerators : public BusObject {
public:
    explicit BusyAccelerators(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.kde.kglobalaccel"), QStringLiteral("/kglobalaccel")) {
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        for (int i = 0; i < 100; ++i) {
            bus().interface()->registeredServiceNames();
        }
        if (message.member() == QStringLiteral("isGlobalShortcutAvailable")) {
            bus().send(message.createReply(true));
        } else if (message.member() == QStringLiteral("setShortcut")) {
            const auto keys = qdbus_cast<QList<int>>(message.arguments().at(1));
            bus().send(message.createReply(QVariant::fromValue(keys)));
        } else {
            bus().send(message.createReply());
        }
        return true;
    }
};

/// Beside the test, which waits for answers.
class ServiceThread {
public:
    explicit ServiceThread(QObject& service) {
        service.moveToThread(&thread_);
        thread_.start();
    }
    ~ServiceThread() {
        thread_.quit();
        thread_.wait();
    }
    ServiceThread(const ServiceThread&) = delete;
    ServiceThread& operator=(const ServiceThread&) = delete;

private:
    QThread thread_;
};

TEST(KGlobalAccelPatience, AServiceThatIsBusyForAMomentGrantsTheShortcut) {
    const PrivateBus bus;
    BusyAccelerators accelerators(bus.connect(QStringLiteral("accelerators")));
    const ServiceThread thread(accelerators);
    HandDrivenQueue queue;
    const auto symbolOfH = [](std::int64_t) { return std::vector<xkb_keysym_t>{'h'}; };
    const LinuxPlatform::KGlobalAccelHotKeyService::Patience patience{std::chrono::seconds(30),
                                                                      std::chrono::milliseconds(1)};
    LinuxPlatform::KGlobalAccelHotKeyService keys(bus.connect(QStringLiteral("curtain")), queue, symbolOfH,
                                                  patience);
    EXPECT_EQ(keys.registerHotKey({4, 6400}, {1, 1}), 0);
}

} // namespace
} // namespace TestSupport
