#pragma once

#include "platform/HotKeyService.h"
#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/i3/I3Connection.h"
#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/shortcutlists/I3Shortcuts.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Hot keys as bindings of sway that are made while it runs, do nothing there and are told of over its
/// socket. sway loses them when it reads its configuration anew, and gets them back. What its user has bound
/// in the configuration is left alone. A press is told when the key is let go. Source: sway(5), `bindcode`,
/// and sway-ipc(7).
class SwayHotKeyService : public Platform::HotKeyService {
public:
    /// What the keyboard has at the position of a virtual key code.
    struct Keys {
        /// The key's number in XKB's terms, which are sway's; absent where there is no such key.
        std::function<std::optional<std::uint32_t>(std::int64_t keyCode)> scanCode;
        /// Everything that the key can mean.
        std::function<std::vector<xkb_keysym_t>(std::int64_t keyCode)> symbols;
    };

    /// How long sway's answers are waited for.
    struct Patience {
        std::chrono::milliseconds start{3000};
        std::chrono::milliseconds bind{200};
        std::chrono::milliseconds end{500};
    };

    /// `queue` and `log` outlive this object. `record` is where it is written down what is bound, so that the
    /// next run takes away what this one could not. Waits for sway's answer.
    SwayHotKeyService(const std::filesystem::path& socket, Platform::MainQueue& queue, Platform::Log& log,
                      Keys keys, EarlierValue record, Patience patience);
    ~SwayHotKeyService() override;

    Platform::HotKeyReach reach() const override;
    bool canTakeKeyboard() const override { return false; }
    /// Waits a moment for sway's answer.
    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) override;
    void unregisterHotKey(Platform::HotKeyID id) override;
    Platform::Subscription installEventHandler(Handler handler) override;

private:
    struct HotKey {
        Platform::HotKeyID id;
        Platform::HotKeyCombination combination;
        /// As sway writes it.
        std::string text;
        /// Not where its user has taken the combination since.
        bool isBound = false;
    };

    void readConfiguration();
    void configurationRead(const QByteArray& reply);
    void handleEvent(I3Event event, const QByteArray& payload);
    void tell(const std::string& command);
    std::optional<std::string> textOf(const Platform::HotKeyCombination& combination) const;
    bool isUsers(const Platform::HotKeyCombination& combination) const;
    bool isBound(const std::string& text) const;
    void bind(const std::string& text);
    void unbind(const std::string& text);
    void bindingRefused(const std::string& text, const std::string& refusal);
    void unbindWhatIsLeft();
    void writeDown();

    Platform::MainQueue& queue_;
    Platform::Log& log_;
    Patience patience_;
    Keys keys_;
    EarlierValue record_;
    std::filesystem::path configurationFile_;
    /// Of the user; absent until sway has told them.
    std::optional<I3Bindings> usersBindings_;
    std::vector<HotKey> hotKeys_;
    Platform::Subscribers<Platform::HotKeyEvent, Platform::HotKeyID> handlers_;
    I3Connection connection_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
