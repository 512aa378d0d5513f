#pragma once

#include "platform/HotKeyService.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace TestSupport {

/// What every hot-key service does. A world has `service()`, `type(combination)`, which presses and releases
/// the keys of a combination, and `settle()`, after which whatever that causes has happened.
template <class World>
struct HotKeyServiceContract : testing::Test {
    static constexpr Platform::HotKeyCombination controlH{4, 4096};
    static constexpr Platform::HotKeyCombination controlJ{38, 4096};

    /// For the worlds' own use.
    static constexpr std::uint32_t markerID = 99;

    World world;
    Platform::HotKeyService& service = world.service();
    std::vector<std::pair<Platform::HotKeyEvent, std::uint32_t>> events;
    Platform::Subscription subscription =
        service.installEventHandler([this](Platform::HotKeyEvent event, Platform::HotKeyID id) {
            // A world may have keys of its own.
            if (id.id != markerID) {
                events.emplace_back(event, id.id);
            }
        });

    void type(const Platform::HotKeyCombination& combination) {
        world.type(combination);
        world.settle();
    }
};

TYPED_TEST_SUITE_P(HotKeyServiceContract);

TYPED_TEST_P(HotKeyServiceContract, APressAndAReleaseAreToldOnceEach) {
    ASSERT_EQ(this->service.registerHotKey(this->controlH, {1, 7}), 0);
    this->type(this->controlH);
    EXPECT_THAT(this->events, testing::ElementsAre(std::pair(Platform::HotKeyEvent::pressed, 7U),
                                                   std::pair(Platform::HotKeyEvent::released, 7U)));
}

TYPED_TEST_P(HotKeyServiceContract, CombinationsAreToldApartByTheirIdentifiers) {
    ASSERT_EQ(this->service.registerHotKey(this->controlH, {1, 7}), 0);
    ASSERT_EQ(this->service.registerHotKey(this->controlJ, {1, 8}), 0);
    this->type(this->controlJ);
    EXPECT_THAT(this->events, testing::ElementsAre(std::pair(Platform::HotKeyEvent::pressed, 8U),
                                                   std::pair(Platform::HotKeyEvent::released, 8U)));
}

TYPED_TEST_P(HotKeyServiceContract, WhatIsNotRegisteredAnyMoreIsNotTold) {
    ASSERT_EQ(this->service.registerHotKey(this->controlH, {1, 7}), 0);
    this->service.unregisterHotKey({1, 7});
    this->service.unregisterHotKey({1, 7});
    this->service.unregisterHotKey({1, 99});
    this->type(this->controlH);
    EXPECT_THAT(this->events, testing::IsEmpty());
}

TYPED_TEST_P(HotKeyServiceContract, AnEndedSubscriptionHearsNothing) {
    ASSERT_EQ(this->service.registerHotKey(this->controlH, {1, 7}), 0);
    this->subscription = {};
    this->type(this->controlH);
    EXPECT_THAT(this->events, testing::IsEmpty());
}

REGISTER_TYPED_TEST_SUITE_P(HotKeyServiceContract, APressAndAReleaseAreToldOnceEach,
                            CombinationsAreToldApartByTheirIdentifiers, WhatIsNotRegisteredAnyMoreIsNotTold,
                            AnEndedSubscriptionHearsNothing);

} // namespace TestSupport
