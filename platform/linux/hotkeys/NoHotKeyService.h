#pragma once

#include "platform/HotKeyService.h"

namespace LinuxPlatform {

/// Stands in where the session has no global shortcuts: every combination is refused.
class NoHotKeyService : public Platform::HotKeyService {
public:
    Platform::HotKeyReach reach() const override { return Platform::HotKeyReach::nowhere; }
    bool canTakeKeyboard() const override { return false; }
    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& /*combination*/,
                                          Platform::HotKeyID /*id*/) override {
        return Platform::hotKeyInvalid;
    }
    void unregisterHotKey(Platform::HotKeyID /*id*/) override {}
    Platform::Subscription installEventHandler(Handler /*handler*/) override { return {}; }
};

} // namespace LinuxPlatform
