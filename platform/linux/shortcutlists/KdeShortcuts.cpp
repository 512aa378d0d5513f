#include "platform/linux/shortcutlists/KdeShortcuts.h"

#include "platform/HotKeyService.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::array<std::pair<xkb_keysym_t, Qt::Key>, 17> namedKeys{{
    {XKB_KEY_Escape, Qt::Key_Escape},
    {XKB_KEY_Tab, Qt::Key_Tab},
    {XKB_KEY_BackSpace, Qt::Key_Backspace},
    {XKB_KEY_Return, Qt::Key_Return},
    {XKB_KEY_KP_Enter, Qt::Key_Enter},
    {XKB_KEY_Insert, Qt::Key_Insert},
    {XKB_KEY_Delete, Qt::Key_Delete},
    {XKB_KEY_Home, Qt::Key_Home},
    {XKB_KEY_End, Qt::Key_End},
    {XKB_KEY_Page_Up, Qt::Key_PageUp},
    {XKB_KEY_Page_Down, Qt::Key_PageDown},
    {XKB_KEY_Left, Qt::Key_Left},
    {XKB_KEY_Up, Qt::Key_Up},
    {XKB_KEY_Right, Qt::Key_Right},
    {XKB_KEY_Down, Qt::Key_Down},
    {XKB_KEY_Menu, Qt::Key_Menu},
    {XKB_KEY_Num_Lock, Qt::Key_NumLock},
}};

std::optional<int> plainKey(xkb_keysym_t symbol) {
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35) {
        return Qt::Key_F1 + static_cast<int>(symbol - XKB_KEY_F1);
    }
    const auto* const named = std::ranges::find(namedKeys, symbol, &decltype(namedKeys)::value_type::first);
    if (named != namedKeys.end()) {
        return named->second;
    }
    const auto character = xkb_keysym_to_utf32(xkb_keysym_to_upper(symbol));
    return character >= U' ' ? std::optional(static_cast<int>(character)) : std::nullopt;
}

} // namespace

KdeShortcuts::KdeShortcuts(QDBusConnection bus) : bus_(std::move(bus)) {}

void KdeShortcuts::ask(const WantedShortcut& wanted, Answer answer) {
    std::set<int> keys;
    for (const auto symbol : wanted.symbols) {
        if (const auto key = qtKey(wanted.modifiers, symbol)) {
            keys.insert(*key);
        }
    }
    if (keys.empty()) {
        answer(false);
        return;
    }
    const auto missing = std::make_shared<std::size_t>(keys.size());
    for (const auto key : keys) {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.kglobalaccel"), QStringLiteral("/kglobalaccel"),
            QStringLiteral("org.kde.KGlobalAccel"), QStringLiteral("action"));
        call.setArguments({key});
        call.setAutoStartService(false);
        auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), &questions_);
        QObject::connect(
            watcher, &QDBusPendingCallWatcher::finished, &questions_, [watcher, missing, answer] {
                watcher->deleteLater();
                const auto owner = watcher->reply().arguments().value(0).toStringList();
                const bool isTaken = !watcher->isError() && !owner.isEmpty() && owner.first() != ownComponent;
                if (*missing != 0 && (isTaken || --*missing == 0)) {
                    *missing = 0;
                    answer(isTaken);
                }
            });
    }
}

std::optional<int> KdeShortcuts::qtKey(std::int64_t modifiers, xkb_keysym_t symbol) {
    const auto key = plainKey(symbol);
    if (!key) {
        return std::nullopt;
    }
    int result = *key;
    constexpr std::array<std::pair<std::int64_t, Qt::KeyboardModifier>, 4> names{{
        {Platform::HotKeyModifier::command, Qt::MetaModifier},
        {Platform::HotKeyModifier::shift, Qt::ShiftModifier},
        {Platform::HotKeyModifier::option, Qt::AltModifier},
        {Platform::HotKeyModifier::control, Qt::ControlModifier},
    }};
    for (const auto& [modifier, qtModifier] : names) {
        if ((modifiers & modifier) != 0) {
            result |= static_cast<int>(qtModifier);
        }
    }
    return result;
}

} // namespace LinuxPlatform
