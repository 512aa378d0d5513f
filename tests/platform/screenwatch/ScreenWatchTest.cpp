#include "platform/linux/screenwatch/ScreenWatch.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::CaptureWatch;
using LinuxPlatform::ScreenWatch;

constexpr auto symbol = "CGSIsScreenWatcherPresent";
constexpr std::optional<bool> unknown;

class Road : public CaptureWatch {
public:
    explicit Road(std::optional<bool> answer) : answer_(answer) {}

    std::optional<bool> isScreenCaptured() override { return answer_; }

    using CaptureWatch::tellNews;

private:
    std::optional<bool> answer_;
};

std::optional<bool> answerOf(std::initializer_list<std::optional<bool>> answers) {
    std::vector<std::unique_ptr<CaptureWatch>> roads;
    for (const auto& answer : answers) {
        roads.push_back(std::make_unique<Road>(answer));
    }
    return ScreenWatch(std::move(roads)).lookUp(symbol)();
}

TEST(ScreenWatchTest, OneRoadThatIsTakenIsEnough) {
    EXPECT_EQ(answerOf({true}), true);
    EXPECT_EQ(answerOf({false, true}), true);
    EXPECT_EQ(answerOf({unknown, true}), true);
    EXPECT_EQ(answerOf({true, unknown}), true);
}

TEST(ScreenWatchTest, NoneIsTakenOnlyIfThatIsKnownOfAll) {
    EXPECT_EQ(answerOf({false, false}), false);
    EXPECT_EQ(answerOf({unknown}), unknown);
    EXPECT_EQ(answerOf({unknown, false}), unknown);
    EXPECT_EQ(answerOf({false, unknown}), unknown);
}

TEST(ScreenWatchTest, NewsOfEveryRoadIsPassedOn) {
    std::vector<std::unique_ptr<CaptureWatch>> roads;
    std::vector<Road*> senders;
    for (int count = 0; count < 2; ++count) {
        auto road = std::make_unique<Road>(false);
        senders.push_back(road.get());
        roads.push_back(std::move(road));
    }
    ScreenWatch watch(std::move(roads));
    int news = 0;
    auto observer = watch.addNewsObserver([&] { ++news; });
    senders.front()->tellNews();
    senders.back()->tellNews();
    EXPECT_EQ(news, 2);
    observer = {};
    senders.front()->tellNews();
    EXPECT_EQ(news, 2);
}

TEST(ScreenWatchTest, WithoutARoadNothingCanBeAsked) {
    EXPECT_FALSE(ScreenWatch({}).lookUp(symbol));
    std::vector<std::unique_ptr<CaptureWatch>> roads;
    roads.push_back(std::make_unique<Road>(true));
    EXPECT_FALSE(ScreenWatch(std::move(roads)).lookUp("another"));
}

} // namespace
