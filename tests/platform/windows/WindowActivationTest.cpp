#include "platform/linux/windows/WindowActivation.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <array>
#include <optional>
#include <set>
#include <vector>

namespace {

using LinuxPlatform::WindowActivation;
using LinuxPlatform::WindowId;
using testing::ElementsAre;
using testing::IsEmpty;

struct WindowActivationTest : testing::Test {
    TestSupport::HandDrivenQueue queue;
    std::vector<WindowId> stackingOrder{1, 2, 3};
    std::set<WindowId> elsewhere;
    std::vector<WindowId> activated;
    std::optional<WindowActivation> activation{
        std::in_place, queue,
        [this] {
            return WindowActivation::Scene{stackingOrder,
                                           [this](WindowId window) { return !elsewhere.contains(window); }};
        },
        [this](WindowId window) { activated.push_back(window); }};

    void hide(WindowId window, std::optional<WindowId> focused) {
        activation->noteHiding(std::array{window}, focused);
    }

    void request(const std::vector<WindowId>& windows) { activation->request(windows); }
};

TEST_F(WindowActivationTest, ComesAtTheEndOfTheTurn) {
    request({1});
    EXPECT_THAT(activated, IsEmpty());
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1));
}

TEST_F(WindowActivationTest, TopmostOfAllThatIsAskedInOneTurnComesToTheFront) {
    request({2});
    request({1});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(2));
}

TEST_F(WindowActivationTest, EveryTurnHasItsOwn) {
    request({2});
    queue.runReady();
    request({1});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(2, 1));
}

TEST_F(WindowActivationTest, WindowThatHadTheFocusGoesBeforeTheTopmost) {
    hide(1, 1);
    hide(3, 3);
    request({3});
    request({1});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1)) << "the third got the focus when the first was hidden";
}

TEST_F(WindowActivationTest, FocusIsGivenBackOnce) {
    hide(1, 1);
    request({1, 2});
    queue.runReady();
    request({1, 2});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1, 2));
}

TEST_F(WindowActivationTest, FocusOfAWindowThatIsNotAskedForIsKept) {
    hide(1, 1);
    request({2});
    queue.runReady();
    request({1, 3});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(2, 1));
}

TEST_F(WindowActivationTest, WindowsElsewhereStayThere) {
    elsewhere = {2, 3};
    hide(3, 3);
    request({1, 2, 3});
    queue.runReady();
    request({2});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1));
}

TEST_F(WindowActivationTest, WindowThatIsHiddenAgainInTheSameTurnIsNotActivated) {
    request({1, 2});
    hide(2, std::nullopt);
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1));
    request({1});
    hide(1, std::nullopt);
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(1));
}

TEST_F(WindowActivationTest, WindowThatTookTheIdentifierOfOneThatIsGoneHadNotTheFocus) {
    hide(1, 1);
    activation->forget([](WindowId window) { return window == 1; });
    request({1, 2});
    queue.runReady();
    EXPECT_THAT(activated, ElementsAre(2));
}

TEST_F(WindowActivationTest, NothingIsActivatedAfterItsEnd) {
    request({1});
    activation.reset();
    queue.runReady();
    EXPECT_THAT(activated, IsEmpty());
}

} // namespace
