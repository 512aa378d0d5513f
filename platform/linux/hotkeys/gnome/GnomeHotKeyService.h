#pragma once

#include "platform/HotKeyService.h"
#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Hot keys that GNOME Shell hears for Curtain's extension in it, whatever window has the focus. While the
/// extension does not answer, another service has them.
class GnomeHotKeyService : public Platform::HotKeyService {
public:
    /// The key's number in XKB's terms; absent where the keyboard has no such key.
    using ScanCodeOf = std::function<std::optional<std::uint32_t>(std::int64_t keyCode)>;

    /// `queue` and `log` outlive this object. Whoever registers waits for the shell's answer, at most for
    /// `patience`.
    GnomeHotKeyService(const QDBusConnection& bus, Platform::MainQueue& queue, Platform::Log& log,
                       ScanCodeOf scanCodeOf, std::unique_ptr<Platform::HotKeyService> standIn,
                       std::chrono::milliseconds patience = std::chrono::seconds(3));
    ~GnomeHotKeyService() override;
    GnomeHotKeyService(const GnomeHotKeyService&) = delete;
    GnomeHotKeyService& operator=(const GnomeHotKeyService&) = delete;

    Platform::HotKeyReach reach() const override;
    bool canTakeKeyboard() const override { return standIn_->canTakeKeyboard(); }
    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) override;
    void unregisterHotKey(Platform::HotKeyID id) override;
    Platform::Subscription installEventHandler(Handler handler) override;

private:
    /// As the extension is told.
    struct Key {
        std::uint32_t scanCode = 0;
        std::uint32_t modifiers = 0;

        bool operator==(const Key&) const = default;
    };
    struct HotKey {
        Platform::HotKeyID id;
        Platform::HotKeyCombination combination;
        Key key;
    };

    bool isThere() const;
    void meet();
    void grabLater(const HotKey& hotKey);
    void noteGrab(const HotKey& hotKey, const QDBusMessage& answer);
    void handOver(const HotKey& hotKey);
    QDBusMessage request(const QString& method, const Key& key) const;
    void receive(const QDBusMessage& message);

    QDBusConnection bus_;
    Platform::MainQueue& queue_;
    Platform::Log& log_;
    ScanCodeOf scanCodeOf_;
    std::unique_ptr<Platform::HotKeyService> standIn_;
    std::chrono::milliseconds patience_;
    /// Of an extension from before it knew of keys.
    bool isKeyless_ = false;
    std::vector<HotKey> hotKeys_;
    Platform::Subscribers<Platform::HotKeyEvent, Platform::HotKeyID> handlers_;
    Platform::Subscription standInEvents_;
    /// Receives the answers of the extension that is there.
    std::unique_ptr<QObject> conversation_;
    Platform::Lifetime lifetime_;
    DBusSignal key_;
    BusNameOwner shell_;
    BusNameOwner extension_;
};

} // namespace LinuxPlatform
