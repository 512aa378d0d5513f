#include "platform/linux/hotkeys/sway/SwayHotKeyService.h"

#include <QJsonObject>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

namespace Modifier = Platform::HotKeyModifier;

/// What a binding does: nothing, under a name by which it is known.
constexpr std::string_view commandStart = "nop com.curtain.Curtain ";

struct ModifierName {
    std::int64_t bit;
    std::string_view name;
};

constexpr std::array<ModifierName, 4> modifierNames{{{Modifier::control, "Ctrl"},
                                                     {Modifier::shift, "Shift"},
                                                     {Modifier::option, "Mod1"},
                                                     {Modifier::command, "Mod4"}}};
constexpr auto knownModifiers = Modifier::control | Modifier::shift | Modifier::option | Modifier::command;

std::string textOfBinding(std::int64_t modifiers, std::uint32_t scanCode) {
    std::string text;
    for (const auto& modifier : modifierNames) {
        if ((modifiers & modifier.bit) != 0) {
            text += std::string(modifier.name) + "+";
        }
    }
    return text + std::to_string(scanCode);
}

QJsonObject objectIn(const QByteArray& json) {
    return jsonOf(json).object();
}

} // namespace

SwayHotKeyService::SwayHotKeyService(const std::filesystem::path& socket, Platform::MainQueue& queue,
                                     Platform::Log& log, Keys keys, EarlierValue record, Patience patience)
    : queue_(queue),
      log_(log),
      patience_(patience),
      keys_(std::move(keys)),
      record_(std::move(record)),
      connection_(socket, queue, {"binding", "workspace"},
                  {[this] { readConfiguration(); }, nullptr,
                   [this](I3Event event, const QByteArray& payload) { handleEvent(event, payload); }}) {
    connection_.open();
    connection_.finish(patience_.start);
}

SwayHotKeyService::~SwayHotKeyService() {
    for (const auto& hotKey : std::exchange(hotKeys_, {})) {
        if (hotKey.isBound) {
            unbind(hotKey.text);
        }
    }
    connection_.finish(patience_.end);
    if (connection_.isConnected() && usersBindings_) {
        record_.forget();
    }
}

Platform::HotKeyReach SwayHotKeyService::reach() const {
    return connection_.isConnected() && usersBindings_ ? Platform::HotKeyReach::everywhere
                                                       : Platform::HotKeyReach::nowhere;
}

Platform::HotKeyStatus SwayHotKeyService::registerHotKey(const Platform::HotKeyCombination& combination,
                                                         Platform::HotKeyID id) {
    const auto text = textOf(combination);
    if (!text || reach() == Platform::HotKeyReach::nowhere) {
        return Platform::hotKeyInvalid;
    }
    if (isUsers(combination)) {
        return Platform::hotKeyExists;
    }
    const bool isNew = !isBound(*text);
    hotKeys_.push_back({id, combination, *text, true});
    if (isNew) {
        writeDown();
        bind(*text);
        connection_.finish(patience_.bind);
    }
    if (isBound(*text)) {
        return 0;
    }
    unregisterHotKey(id);
    return Platform::hotKeyInvalid;
}

void SwayHotKeyService::unregisterHotKey(Platform::HotKeyID id) {
    const auto found = std::ranges::find(hotKeys_, id, &HotKey::id);
    if (found == hotKeys_.end()) {
        return;
    }
    const auto hotKey = *found;
    hotKeys_.erase(found);
    if (hotKey.isBound && !isBound(hotKey.text)) {
        unbind(hotKey.text);
    }
    writeDown();
}

Platform::Subscription SwayHotKeyService::installEventHandler(Handler handler) {
    return handlers_.add(std::move(handler));
}

void SwayHotKeyService::readConfiguration() {
    connection_.ask(I3Request::getVersion, {}, [this](const QByteArray& reply) {
        configurationFile_ =
            objectIn(reply).value(QLatin1String("loaded_config_file_name")).toString().toStdString();
    });
    connection_.ask(I3Request::getConfig, {}, [this](const QByteArray& reply) { configurationRead(reply); });
}

void SwayHotKeyService::configurationRead(const QByteArray& reply) {
    const bool isFirst = !usersBindings_;
    usersBindings_ = I3Shortcuts::bindings(
        objectIn(reply).value(QLatin1String("config")).toString().toStdString(), configurationFile_);
    if (isFirst) {
        unbindWhatIsLeft();
    }
    for (auto& hotKey : hotKeys_) {
        hotKey.isBound = !isUsers(hotKey.combination);
        if (hotKey.isBound) {
            bind(hotKey.text);
        }
    }
}

void SwayHotKeyService::handleEvent(I3Event event, const QByteArray& payload) {
    const auto object = objectIn(payload);
    if (event == I3Event::binding) {
        const auto binding = object.value(QLatin1String("binding")).toObject();
        tell(binding.value(QLatin1String("command")).toString().toStdString());
    } else if (event == I3Event::workspace &&
               object.value(QLatin1String("change")).toString() == QLatin1String("reload")) {
        readConfiguration();
    }
}

void SwayHotKeyService::tell(const std::string& command) {
    if (!command.starts_with(commandStart)) {
        return;
    }
    const auto text = command.substr(commandStart.size());
    for (const auto& hotKey : hotKeys_) {
        if (hotKey.text == text) {
            queue_.async(lifetime_.weak([this, id = hotKey.id] {
                handlers_.tell(Platform::HotKeyEvent::pressed, id);
                handlers_.tell(Platform::HotKeyEvent::released, id);
            }));
        }
    }
}

std::optional<std::string> SwayHotKeyService::textOf(const Platform::HotKeyCombination& combination) const {
    const auto scanCode = keys_.scanCode(combination.keyCode);
    return scanCode ? std::optional(textOfBinding(combination.modifiers, *scanCode)) : std::nullopt;
}

bool SwayHotKeyService::isUsers(const Platform::HotKeyCombination& combination) const {
    const auto modifiers = combination.modifiers & knownModifiers;
    const WantedShortcut wanted{modifiers, keys_.symbols(combination.keyCode)};
    const auto scanCode = keys_.scanCode(combination.keyCode);
    const auto bindings = usersBindings_.value_or(I3Bindings());
    return std::ranges::any_of(bindings.bySymbol,
                               [&](const Accelerator& accelerator) { return wanted.matches(accelerator); }) ||
           std::ranges::any_of(bindings.byPosition, [&](const I3Bindings::Position& position) {
               return scanCode == position.scanCode && modifiers == position.modifiers;
           });
}

bool SwayHotKeyService::isBound(const std::string& text) const {
    return std::ranges::any_of(hotKeys_,
                               [&](const HotKey& hotKey) { return hotKey.isBound && hotKey.text == text; });
}

void SwayHotKeyService::bind(const std::string& text) {
    const auto command = "bindcode --release " + text + " " + std::string(commandStart) + text;
    connection_.ask(I3Request::runCommand, QByteArray::fromStdString(command),
                    [this, text](const QByteArray& reply) {
                        for (const auto& refusal : refusalsIn(reply)) {
                            bindingRefused(text, refusal);
                        }
                    });
}

void SwayHotKeyService::bindingRefused(const std::string& text, const std::string& refusal) {
    log_.writeLine("Curtain: sway refused the shortcut " + text + ": " + refusal);
    for (auto& hotKey : hotKeys_) {
        hotKey.isBound = hotKey.isBound && hotKey.text != text;
    }
}

void SwayHotKeyService::unbind(const std::string& text) {
    connection_.ask(I3Request::runCommand, QByteArray::fromStdString("unbindcode --release " + text),
                    nullptr);
}

void SwayHotKeyService::unbindWhatIsLeft() {
    std::istringstream texts(record_.isOfThisSession() ? record_.get().value_or("") : "");
    for (std::string text; texts >> text;) {
        const bool isUsers = std::ranges::any_of(usersBindings_->byPosition, [&](const auto& position) {
            return textOfBinding(position.modifiers, position.scanCode) == text;
        });
        if (!isUsers && !isBound(text)) {
            unbind(text);
        }
    }
    writeDown();
}

void SwayHotKeyService::writeDown() {
    std::string texts;
    for (const auto& hotKey : hotKeys_) {
        texts += (texts.empty() ? "" : " ") + hotKey.text;
    }
    record_.replace(texts.empty() ? std::nullopt : std::optional(texts));
}

} // namespace LinuxPlatform
