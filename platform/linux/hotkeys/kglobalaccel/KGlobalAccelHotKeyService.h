#pragma once

#include "platform/HotKeyService.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QString>
#include <QVariantList>
#include <xkbcommon/xkbcommon.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

namespace LinuxPlatform {

/// Hot keys as shortcuts of KDE's service of global accelerators (org.kde.KGlobalAccel), which KWin has on
/// the session bus. It hears the keyboard whatever window has the focus. Its calls are waited for, though not
/// for long.
class KGlobalAccelHotKeyService : public Platform::HotKeyService {
public:
    /// All that the key of a virtual key code can mean.
    using SymbolsOfKey = std::function<std::vector<xkb_keysym_t>(std::int64_t keyCode)>;

    /// How long an answer is waited for.
    struct Patience {
        /// While a shortcut is asked for: silence is one that is missed until the next start.
        std::chrono::milliseconds grant{3000};
        std::chrono::milliseconds other{500};
    };

    /// `queue` outlives this object.
    KGlobalAccelHotKeyService(const QDBusConnection& bus, Platform::MainQueue& queue,
                              SymbolsOfKey symbolsOfKey, Patience patience);
    /// The shortcuts are not KDE's any more.
    ~KGlobalAccelHotKeyService() override;
    KGlobalAccelHotKeyService(const KGlobalAccelHotKeyService&) = delete;
    KGlobalAccelHotKeyService& operator=(const KGlobalAccelHotKeyService&) = delete;

    /// Whether somebody offers the service, as the bus says.
    static bool isThere(const QDBusConnection& bus, Patience patience);

    Platform::HotKeyReach reach() const override { return Platform::HotKeyReach::everywhere; }
    bool canTakeKeyboard() const override { return false; }
    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) override;
    void unregisterHotKey(Platform::HotKeyID id) override;
    Platform::Subscription installEventHandler(Handler handler) override;

private:
    struct HotKey {
        Platform::HotKeyID id;
        /// Names the combination; two hot keys may share it.
        QString action;
        bool isPressed = false;
    };

    QList<int> keysOf(const Platform::HotKeyCombination& combination) const;
    bool isKnown(const QString& action) const;
    bool areAvailable(const QList<int>& keys) const;
    bool isAvailable(int key) const;
    /// Whether a run of ours that was killed had the key.
    bool giveBackWhatIsLeft(int key) const;
    Platform::HotKeyStatus take(const QString& action, const QList<int>& keys) const;
    void giveBack(const QString& action) const;
    void receive(Platform::HotKeyEvent event, const QDBusMessage& message);
    QVariantList call(const QString& method, const QVariantList& arguments,
                      std::chrono::milliseconds deadline) const;

    QDBusConnection bus_;
    Platform::MainQueue& queue_;
    SymbolsOfKey symbolsOfKey_;
    Patience patience_;
    std::vector<HotKey> hotKeys_;
    Platform::Subscribers<Platform::HotKeyEvent, Platform::HotKeyID> handlers_;
    Platform::Lifetime lifetime_;
    DBusSignal pressed_;
    DBusSignal released_;
};

} // namespace LinuxPlatform
