#include "platform/linux/hotkeys/gnome/GnomeHotKeyService.h"

#include "platform/linux/windows/gnome/GnomeShellProtocol.h"

#include <QDBusError>

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {

using namespace GnomeShellProtocol;

namespace {

namespace Modifier = Platform::HotKeyModifier;

/// With the bits that X has for them.
constexpr std::array<std::pair<std::int64_t, std::uint32_t>, 4> modifierBits{
    {{Modifier::shift, 1}, {Modifier::control, 4}, {Modifier::option, 8}, {Modifier::command, 64}}};

std::uint32_t modifiersOf(std::int64_t modifiers) {
    std::uint32_t bits = 0;
    for (const auto& [modifier, bit] : modifierBits) {
        bits |= (modifiers & modifier) != 0 ? bit : 0;
    }
    return bits;
}

bool isUnknown(const QDBusMessage& answer) {
    return QDBusError(answer).type() == QDBusError::UnknownMethod;
}

bool isGranted(const QDBusMessage& answer) {
    return answer.type() == QDBusMessage::ReplyMessage && answer.arguments().value(0).toBool();
}

} // namespace

GnomeHotKeyService::GnomeHotKeyService(const QDBusConnection& bus, Platform::MainQueue& queue,
                                       Platform::Log& log, ScanCodeOf scanCodeOf,
                                       std::unique_ptr<Platform::HotKeyService> standIn,
                                       std::chrono::milliseconds patience)
    : bus_(bus),
      queue_(queue),
      log_(log),
      scanCodeOf_(std::move(scanCodeOf)),
      standIn_(std::move(standIn)),
      patience_(patience),
      standInEvents_(standIn_->installEventHandler(
          [this](Platform::HotKeyEvent event, Platform::HotKeyID id) { handlers_.tell(event, id); })),
      key_(bus, extensionService, extensionPath, extensionInterface, QStringLiteral("Key"),
           [this](const QDBusMessage& message) { receive(message); }),
      shell_(bus, shellService, [this] { meet(); }),
      extension_(bus, extensionService, [this] { meet(); }) {}

GnomeHotKeyService::~GnomeHotKeyService() {
    while (!hotKeys_.empty()) {
        unregisterHotKey(hotKeys_.back().id);
    }
}

bool GnomeHotKeyService::isThere() const {
    return !extension_.owner().isEmpty() && extension_.owner() == shell_.owner() && !isKeyless_;
}

Platform::HotKeyReach GnomeHotKeyService::reach() const {
    return isThere() ? Platform::HotKeyReach::everywhere : standIn_->reach();
}

void GnomeHotKeyService::meet() {
    isKeyless_ = false;
    conversation_ = std::make_unique<QObject>();
    for (const auto& hotKey : hotKeys_) {
        if (isThere()) {
            grabLater(hotKey);
        } else {
            handOver(hotKey);
        }
    }
}

void GnomeHotKeyService::handOver(const HotKey& hotKey) {
    standIn_->unregisterHotKey(hotKey.id);
    standIn_->registerHotKey(hotKey.combination, hotKey.id);
}

void GnomeHotKeyService::grabLater(const HotKey& hotKey) {
    auto* const answer = new QDBusPendingCallWatcher(
        bus_.asyncCall(request(QStringLiteral("GrabKey"), hotKey.key)), conversation_.get());
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, conversation_.get(), [this, answer, hotKey] {
        answer->deleteLater();
        noteGrab(hotKey, answer->reply());
    });
}

void GnomeHotKeyService::noteGrab(const HotKey& hotKey, const QDBusMessage& answer) {
    isKeyless_ = isUnknown(answer);
    if (isGranted(answer)) {
        standIn_->unregisterHotKey(hotKey.id);
    } else if (isKeyless_) {
        if (std::ranges::find(hotKeys_, hotKey.id, &HotKey::id) != hotKeys_.end()) {
            handOver(hotKey);
        }
    } else {
        log_.writeLine("Curtain: GNOME Shell does not grant the shortcut, which another program may have");
    }
}

Platform::HotKeyStatus GnomeHotKeyService::registerHotKey(const Platform::HotKeyCombination& combination,
                                                          Platform::HotKeyID id) {
    const auto scanCode = scanCodeOf_(combination.keyCode);
    if (!scanCode) {
        return Platform::hotKeyInvalid;
    }
    const HotKey hotKey{id, combination, {*scanCode, modifiersOf(combination.modifiers)}};
    if (isThere()) {
        const auto answer = bus_.call(request(QStringLiteral("GrabKey"), hotKey.key), QDBus::Block,
                                      static_cast<int>(patience_.count()));
        isKeyless_ = isUnknown(answer);
        if (!isKeyless_ && !isGranted(answer)) {
            const bool isHeldByAnother =
                std::ranges::find(hotKeys_, hotKey.key, &HotKey::key) != hotKeys_.end();
            if (answer.type() != QDBusMessage::ReplyMessage && !isHeldByAnother) {
                // It may be granted yet.
                bus_.send(request(QStringLiteral("UngrabKey"), hotKey.key));
            }
            return Platform::hotKeyExists;
        }
    }
    if (!isThere()) {
        if (const auto status = standIn_->registerHotKey(combination, id); status != 0) {
            return status;
        }
    }
    hotKeys_.push_back(hotKey);
    return 0;
}

void GnomeHotKeyService::unregisterHotKey(Platform::HotKeyID id) {
    const auto found = std::ranges::find(hotKeys_, id, &HotKey::id);
    if (found == hotKeys_.end()) {
        return;
    }
    const auto key = found->key;
    hotKeys_.erase(found);
    standIn_->unregisterHotKey(id);
    if (isThere() && std::ranges::find(hotKeys_, key, &HotKey::key) == hotKeys_.end()) {
        bus_.send(request(QStringLiteral("UngrabKey"), key));
    }
}

Platform::Subscription GnomeHotKeyService::installEventHandler(Handler handler) {
    return handlers_.add(std::move(handler));
}

QDBusMessage GnomeHotKeyService::request(const QString& method, const Key& key) const {
    auto message =
        QDBusMessage::createMethodCall(extension_.owner(), extensionPath, extensionInterface, method);
    message.setArguments({key.scanCode, key.modifiers});
    return message;
}

void GnomeHotKeyService::receive(const QDBusMessage& message) {
    const auto arguments = message.arguments();
    if (message.signature() != keySignature || !isThere()) {
        return;
    }
    const Key key{arguments[0].toUInt(), arguments[1].toUInt()};
    const auto event =
        arguments[2].toBool() ? Platform::HotKeyEvent::pressed : Platform::HotKeyEvent::released;
    for (const auto& hotKey : hotKeys_) {
        if (hotKey.key == key) {
            queue_.async(lifetime_.weak([this, event, id = hotKey.id] { handlers_.tell(event, id); }));
        }
    }
}

} // namespace LinuxPlatform
