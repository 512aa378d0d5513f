#pragma once

#include "Curtain/AppDelegate.h"
#include "core/PreferencesJson.h"
#include "tests/support/FakePlatform.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

inline constexpr Platform::Event leftClick{2, 0, std::nullopt};
inline constexpr Platform::Event rightClick{4, 0, std::nullopt};

/// A controller on a platform of fakes.
struct AppDelegateFixture : testing::Test {
    FakePlatform fakes;
    std::unique_ptr<Curtain::AppDelegate> delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);

    CurtainCore::Preferences preferences() {
        return CurtainCore::PreferencesStore(fakes.userDefaults).load();
    }

    void change(const std::function<void(CurtainCore::Preferences&)>& edit) {
        CurtainCore::PreferencesStore store(fakes.userDefaults);
        auto record = store.load();
        edit(record);
        store.save(record);
    }

    void makePrivate(const std::vector<std::string>& identifiers) {
        change([&](auto& record) {
            record.targetApps.clear();
            for (const auto& identifier : identifiers) {
                record.targetApps.push_back({identifier, identifier});
            }
        });
    }

    void launch() { delegate->applicationDidFinishLaunching(); }

    void pressShortcut() {
        fakes.hotKeyService.press();
        fakes.hotKeyService.release();
    }

    std::vector<std::string> takeCalls() { return std::exchange(fakes.workspace.calls, {}); }
    std::vector<std::string> takeEvents() { return std::exchange(fakes.events, {}); }
};

} // namespace TestSupport
