#include "tests/support/HandDrivenQueue.h"

#include "tests/platform/qt/MainQueueContract.h"

namespace TestSupport {
namespace {

using testing::ElementsAre;

struct HandDrivenWorld {
    using Queue = HandDrivenQueue;
    std::unique_ptr<Queue> queue = std::make_unique<Queue>();

    bool runUntil(const std::function<bool()>& condition) const {
        // Other threads hand in tasks in their own time.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition() && std::chrono::steady_clock::now() < deadline) {
            queue->advance(0.001);
        }
        return condition();
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(HandDriven, MainQueueContract, HandDrivenWorld);

struct HandDrivenQueueTest : testing::Test {
    HandDrivenQueue queue;
    std::vector<double> times;

    HandDrivenQueue::Task note() {
        return [this] { times.push_back(queue.now().count()); };
    }
};

TEST_F(HandDrivenQueueTest, TimeStandsStill) {
    queue.async(note());
    queue.asyncAfter(HandDrivenQueue::Seconds(1), note());
    EXPECT_EQ(queue.now().count(), 0);
    queue.runReady();
    queue.runReady();
    EXPECT_EQ(queue.now().count(), 0);
    EXPECT_THAT(times, ElementsAre(0));
}

TEST_F(HandDrivenQueueTest, EveryTaskRunsAtItsTime) {
    for (const auto delay : {0.4, 0.2, 4.0, 3.0}) {
        queue.asyncAfter(HandDrivenQueue::Seconds(delay), note());
    }
    queue.advance(3.5);
    EXPECT_THAT(times, ElementsAre(0.2, 0.4, 3.0));
    EXPECT_EQ(queue.now().count(), 3.5);
    queue.advance(0.5);
    EXPECT_THAT(times, ElementsAre(0.2, 0.4, 3.0, 4.0));
}

TEST_F(HandDrivenQueueTest, TasksOfTasksRunInTheSameAdvanceWhenDue) {
    queue.asyncAfter(HandDrivenQueue::Seconds(1), [this] {
        queue.asyncAfter(HandDrivenQueue::Seconds(0.5), note());
        queue.asyncAfter(HandDrivenQueue::Seconds(5), note());
        queue.async(note());
    });
    queue.advance(2);
    EXPECT_THAT(times, ElementsAre(1.0, 1.5));
}

TEST_F(HandDrivenQueueTest, ARepetitionCatchesUpWithTheTime) {
    auto subscription = queue.repeating(HandDrivenQueue::Seconds(2), note());
    queue.advance(7);
    EXPECT_THAT(times, ElementsAre(2, 4, 6));
    subscription = {};
    queue.advance(7);
    EXPECT_EQ(times.size(), 3U);
}

} // namespace
} // namespace TestSupport
