#pragma once

#include "platform/HotKeyService.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A hot-key service whose keys are pressed by the test.
class FakeHotKeyService : public Platform::HotKeyService {
public:
    struct Registration {
        Platform::HotKeyID id;
        Platform::HotKeyCombination combination;
    };

    FakeHotKeyService() = default;
    /// Notes in `events` when it is asked for something, too.
    explicit FakeHotKeyService(std::vector<std::string>& events) : events_(&events) {}

    std::vector<Registration> registrations;
    std::vector<std::string> calls;
    Platform::HotKeyStatus status = 0;
    int handlersInstalled = 0;
    Platform::HotKeyReach heard = Platform::HotKeyReach::everywhere;
    std::function<void()> onRegister;
    std::function<void()> onUnregister;

    Platform::HotKeyReach reach() const override { return heard; }
    /// There is no keyboard to take off screen.
    bool canTakeKeyboard() const override { return false; }

    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) override {
        calls.push_back("register " + describe(combination) + " as " + std::to_string(id.id));
        if (events_ != nullptr) {
            events_->emplace_back("hot key");
        }
        if (onRegister) {
            onRegister();
        }
        if (status == 0) {
            registrations.push_back({id, combination});
        }
        return status;
    }

    void unregisterHotKey(Platform::HotKeyID id) override {
        calls.push_back("unregister " + std::to_string(id.id));
        if (onUnregister) {
            onUnregister();
        }
        std::erase_if(registrations, [&](const auto& registration) { return registration.id == id; });
    }

    Platform::Subscription installEventHandler(Handler handler) override {
        ++handlersInstalled;
        const auto token = ++lastToken_;
        handlers_.emplace(token, std::move(handler));
        return Platform::Subscription([this, token] { handlers_.erase(token); });
    }

    void send(Platform::HotKeyEvent event, Platform::HotKeyID id) {
        for (const auto& [token, handler] : std::map(handlers_)) {
            handler(event, id);
        }
    }

    void press() { send(Platform::HotKeyEvent::pressed, registrations.at(0).id); }
    void release() { send(Platform::HotKeyEvent::released, registrations.at(0).id); }

private:
    static std::string describe(const Platform::HotKeyCombination& combination) {
        return std::to_string(combination.keyCode) + "/" + std::to_string(combination.modifiers);
    }

    std::vector<std::string>* events_ = nullptr;
    int lastToken_ = 0;
    std::map<int, Handler> handlers_;
};

} // namespace TestSupport
