#include "platform/linux/hotkeys/kglobalaccel/KGlobalAccelHotKeyService.h"

#include "platform/linux/shortcutlists/KdeShortcuts.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

const QString service = QStringLiteral("org.kde.kglobalaccel");
const QString path = QStringLiteral("/kglobalaccel");
const QString interface = QStringLiteral("org.kde.KGlobalAccel");
const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");

/// The shortcut applies at once, and what the service remembers of an earlier run does not.
constexpr unsigned setPresent = 2;
constexpr unsigned noAutoloading = 4;

QString componentPath() {
    return QStringLiteral("/component/") + KdeShortcuts::ownComponent;
}

/// Two identifiers and what KDE's settings show, which is the program's name.
QStringList identityOf(const QString& action) {
    return {KdeShortcuts::ownComponent, action, QStringLiteral("Curtain"), QStringLiteral("Curtain")};
}

QString actionFor(const QList<int>& keys) {
    QString name = QStringLiteral("shortcut");
    for (const auto key : keys) {
        name += QStringLiteral("-%1").arg(static_cast<unsigned>(key), 0, 16);
    }
    return name;
}

} // namespace

KGlobalAccelHotKeyService::KGlobalAccelHotKeyService(const QDBusConnection& bus, Platform::MainQueue& queue,
                                                     SymbolsOfKey symbolsOfKey, Patience patience)
    : bus_(bus),
      queue_(queue),
      symbolsOfKey_(std::move(symbolsOfKey)),
      patience_(patience),
      pressed_(bus, service, componentPath(), componentInterface, QStringLiteral("globalShortcutPressed"),
               [this](const QDBusMessage& message) { receive(Platform::HotKeyEvent::pressed, message); }),
      released_(bus, service, componentPath(), componentInterface, QStringLiteral("globalShortcutReleased"),
                [this](const QDBusMessage& message) { receive(Platform::HotKeyEvent::released, message); }) {
    qDBusRegisterMetaType<QList<int>>();
}

KGlobalAccelHotKeyService::~KGlobalAccelHotKeyService() {
    while (!hotKeys_.empty()) {
        unregisterHotKey(hotKeys_.back().id);
    }
}

bool KGlobalAccelHotKeyService::isThere(const QDBusConnection& bus, Patience patience) {
    if (!bus.isConnected()) {
        return false;
    }
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question.setArguments({service});
    const auto answer = bus.call(question, QDBus::Block, static_cast<int>(patience.other.count()));
    return answer.arguments().value(0).toBool();
}

Platform::HotKeyStatus
KGlobalAccelHotKeyService::registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) {
    const auto keys = keysOf(combination);
    if (keys.isEmpty()) {
        return Platform::hotKeyInvalid;
    }
    const auto action = actionFor(keys);
    if (!isKnown(action)) {
        if (const auto status = take(action, keys); status != 0) {
            return status;
        }
    }
    hotKeys_.push_back({id, action});
    return 0;
}

void KGlobalAccelHotKeyService::unregisterHotKey(Platform::HotKeyID id) {
    const auto found = std::ranges::find(hotKeys_, id, &HotKey::id);
    if (found == hotKeys_.end()) {
        return;
    }
    const auto action = found->action;
    hotKeys_.erase(found);
    if (!isKnown(action)) {
        giveBack(action);
    }
}

Platform::Subscription KGlobalAccelHotKeyService::installEventHandler(Handler handler) {
    return handlers_.add(std::move(handler));
}

QList<int> KGlobalAccelHotKeyService::keysOf(const Platform::HotKeyCombination& combination) const {
    QList<int> keys;
    for (const auto symbol : symbolsOfKey_(combination.keyCode)) {
        const auto key = KdeShortcuts::qtKey(combination.modifiers, symbol);
        if (key && !keys.contains(*key)) {
            keys.append(*key);
        }
    }
    return keys;
}

bool KGlobalAccelHotKeyService::isKnown(const QString& action) const {
    return std::ranges::find(hotKeys_, action, &HotKey::action) != hotKeys_.end();
}

bool KGlobalAccelHotKeyService::areAvailable(const QList<int>& keys) const {
    return std::ranges::all_of(
        keys, [this](int key) { return isAvailable(key) || (giveBackWhatIsLeft(key) && isAvailable(key)); });
}

bool KGlobalAccelHotKeyService::isAvailable(int key) const {
    const auto answer =
        call(QStringLiteral("isGlobalShortcutAvailable"), {key, KdeShortcuts::ownComponent}, patience_.grant);
    return answer.value(0).toBool();
}

bool KGlobalAccelHotKeyService::giveBackWhatIsLeft(int key) const {
    const auto owner = call(QStringLiteral("action"), {key}, patience_.other).value(0).toStringList();
    const auto action = owner.value(1);
    if (owner.value(0) != KdeShortcuts::ownComponent || isKnown(action)) {
        return false;
    }
    giveBack(action);
    return true;
}

Platform::HotKeyStatus KGlobalAccelHotKeyService::take(const QString& action, const QList<int>& keys) const {
    if (!areAvailable(keys)) {
        return Platform::hotKeyExists;
    }
    call(QStringLiteral("doRegister"), {identityOf(action)}, patience_.grant);
    const auto answer =
        call(QStringLiteral("setShortcut"),
             {identityOf(action), QVariant::fromValue(keys), setPresent | noAutoloading}, patience_.grant);
    // What it refuses is 0 in its answer.
    const auto granted = qdbus_cast<QList<int>>(answer.value(0));
    if (granted == keys) {
        return 0;
    }
    giveBack(action);
    return Platform::hotKeyExists;
}

void KGlobalAccelHotKeyService::giveBack(const QString& action) const {
    call(QStringLiteral("setInactive"), {identityOf(action)}, patience_.other);
    call(QStringLiteral("unregister"), {KdeShortcuts::ownComponent, action}, patience_.other);
}

void KGlobalAccelHotKeyService::receive(Platform::HotKeyEvent event, const QDBusMessage& message) {
    const auto action = message.arguments().value(1).toString();
    const bool isPressed = event == Platform::HotKeyEvent::pressed;
    for (auto& hotKey : hotKeys_) {
        // A key that is held down repeats.
        if (hotKey.action == action && std::exchange(hotKey.isPressed, isPressed) != isPressed) {
            queue_.async(lifetime_.weak([this, event, id = hotKey.id] { handlers_.tell(event, id); }));
        }
    }
}

QVariantList KGlobalAccelHotKeyService::call(const QString& method, const QVariantList& arguments,
                                             std::chrono::milliseconds deadline) const {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    const auto reply = bus_.call(message, QDBus::Block, static_cast<int>(deadline.count()));
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
}

} // namespace LinuxPlatform
