#include "platform/Subscribers.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Platform::Subscribers;
using Platform::Subscription;
using testing::ElementsAre;
using testing::IsEmpty;

struct SubscribersTest : testing::Test {
    std::optional<Subscribers<std::string>> subscribers{std::in_place};
    std::vector<std::string> heard;

    Subscription listen(const std::string& listener) {
        return subscribers->add(
            [this, listener](const std::string& word) { heard.push_back(listener + word); });
    }
};

TEST_F(SubscribersTest, AreToldInTheirOrderUntilTheyEnd) {
    EXPECT_TRUE(subscribers->isEmpty());
    const auto first = listen("1");
    auto second = listen("2");
    subscribers->tell("a");
    second = {};
    subscribers->tell("b");
    EXPECT_THAT(heard, ElementsAre("1a", "2a", "1b"));
    EXPECT_FALSE(subscribers->isEmpty());
}

TEST_F(SubscribersTest, OneThatEndsWhileOthersAreToldIsNotToldAnyMore) {
    Subscription second;
    const auto first = subscribers->add([&](const std::string&) { second = {}; });
    second = listen("2");
    subscribers->tell("a");
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(SubscribersTest, OneMayEndItself) {
    Subscription subscription;
    subscription = subscribers->add([&, text = std::string("still here")](const std::string&) {
        subscription = {};
        heard.push_back(text);
    });
    subscribers->tell("a");
    subscribers->tell("b");
    EXPECT_THAT(heard, ElementsAre("still here"));
}

TEST_F(SubscribersTest, OneThatComesWhileOthersAreToldIsToldTheNextTime) {
    Subscription late;
    bool hasCome = false;
    const auto first = subscribers->add([&](const std::string&) {
        if (!std::exchange(hasCome, true)) {
            late = listen("late ");
        }
    });
    subscribers->tell("a");
    EXPECT_THAT(heard, IsEmpty());
    subscribers->tell("b");
    EXPECT_THAT(heard, ElementsAre("late b"));
}

TEST_F(SubscribersTest, SubscriptionsMayOutliveThem) {
    const auto subscription = listen("1");
    subscribers.reset();
}

TEST_F(SubscribersTest, TheyMayGoWhileTheyAreTold) {
    const auto first = subscribers->add([&](const std::string&) { subscribers.reset(); });
    const auto second = listen("2");
    subscribers->tell("a");
    EXPECT_THAT(heard, ElementsAre("2a"));
}

} // namespace
