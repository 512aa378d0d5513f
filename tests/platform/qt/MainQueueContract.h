#pragma once

#include "platform/MainQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace TestSupport {

/// What every main queue does. A world has a pointer to a `queue` and `runUntil(condition)`, which lets the
/// main thread run its tasks until the condition holds and returns false if that takes too long.
template <class World>
struct MainQueueContract : testing::Test {
    using Seconds = Platform::MainQueue::Seconds;

    World world;
    std::vector<std::string> order;

    Platform::MainQueue& queue() { return *world.queue; }
    Platform::MainQueue::Task note(std::string text) {
        return [this, text = std::move(text)] { order.push_back(text); };
    }
    /// Runs the tasks until all that were handed in for now are done and this much time has passed.
    void runFor(Seconds duration) {
        bool isOver = false;
        queue().asyncAfter(duration, [&] { isOver = true; });
        ASSERT_TRUE(world.runUntil([&] { return isOver; }));
    }
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, TasksRunInTheOrderInWhichTheyWereHandedIn) {
    this->queue().async(this->note("a"));
    this->queue().asyncAfter(std::chrono::seconds(0), this->note("b"));
    this->queue().async(this->note("c"));
    this->queue().async(this->note("d"));
    this->runFor(std::chrono::milliseconds(1));
    EXPECT_THAT(this->order, testing::ElementsAre("a", "b", "c", "d"));
}

TYPED_TEST_P(MainQueueContract, NoTaskRunsInsideTheCallThatHandsItIn) {
    const auto handIn = [this] {
        this->queue().async(this->note("task"));
        this->queue().asyncAfter(std::chrono::seconds(0), this->note("task"));
        this->queue().asyncAfter(std::chrono::seconds(-1), this->note("task"));
    };
    handIn();
    EXPECT_THAT(this->order, testing::IsEmpty());
    this->queue().async([&] {
        const auto former = this->order.size();
        handIn();
        EXPECT_EQ(this->order.size(), former);
    });
    EXPECT_TRUE(this->world.runUntil([this] { return this->order.size() == 6; }));
}

TYPED_TEST_P(MainQueueContract, ATaskThatATaskHandsInComesAfterThoseThatWait) {
    this->queue().async([this] {
        this->order.emplace_back("first");
        this->queue().async(this->note("later"));
    });
    this->queue().async(this->note("second"));
    EXPECT_TRUE(this->world.runUntil([this] { return this->order.size() == 3; }));
    EXPECT_THAT(this->order, testing::ElementsAre("first", "second", "later"));
}

TYPED_TEST_P(MainQueueContract, NoTaskRunsBeforeItsTime) {
    std::vector<std::pair<double, double>> delays;
    const std::vector<double> asked{0.0, 0.0001, 0.001, 0.0105, 0.0333333, 0.05, 0.0999999, 0.1};
    const auto start = this->queue().now();
    for (const auto delay : asked) {
        this->queue().asyncAfter(typename TestFixture::Seconds(delay), [&, delay] {
            delays.emplace_back(delay, (this->queue().now() - start).count());
        });
    }
    ASSERT_TRUE(this->world.runUntil([&] { return delays.size() == asked.size(); }));
    for (const auto& [expected, actual] : delays) {
        // The sum of two times is rounded.
        EXPECT_GE(actual, expected - 1e-9);
    }
}

TYPED_TEST_P(MainQueueContract, DelayedTasksRunInTheOrderOfTheirTimes) {
    this->queue().asyncAfter(std::chrono::milliseconds(40), this->note("last"));
    for (const auto* name : {"a", "b", "c", "d", "e"}) {
        this->queue().asyncAfter(std::chrono::milliseconds(20), this->note(name));
    }
    this->queue().asyncAfter(std::chrono::milliseconds(5), this->note("first"));
    EXPECT_TRUE(this->world.runUntil([this] { return this->order.size() == 7; }));
    EXPECT_THAT(this->order, testing::ElementsAre("first", "a", "b", "c", "d", "e", "last"));
}

TYPED_TEST_P(MainQueueContract, RepeatingBeginsAfterOneInterval) {
    const auto start = this->queue().now();
    std::vector<double> times;
    const auto subscription = this->queue().repeating(
        std::chrono::milliseconds(20), [&] { times.push_back((this->queue().now() - start).count()); });
    EXPECT_THAT(times, testing::IsEmpty());
    ASSERT_TRUE(this->world.runUntil([&] { return times.size() == 3; }));
    EXPECT_GE(times[0], 0.02 - 1e-9);
    EXPECT_GE(times[2], 0.06 - 1e-9);
}

TYPED_TEST_P(MainQueueContract, RepeatingEndsWithItsSubscription) {
    int calls = 0;
    {
        const auto subscription = this->queue().repeating(std::chrono::milliseconds(5), [&] { ++calls; });
        ASSERT_TRUE(this->world.runUntil([&] { return calls == 2; }));
    }
    this->runFor(std::chrono::milliseconds(30));
    EXPECT_EQ(calls, 2);
}

TYPED_TEST_P(MainQueueContract, RepeatingMayEndBeforeItBegins) {
    int calls = 0;
    {
        const auto subscription = this->queue().repeating(std::chrono::milliseconds(5), [&] { ++calls; });
    }
    this->runFor(std::chrono::milliseconds(30));
    EXPECT_EQ(calls, 0);
}

TYPED_TEST_P(MainQueueContract, ATaskMayEndItsOwnRepetition) {
    int calls = 0;
    std::optional<Platform::Subscription> subscription;
    // What the task holds must last until it returns.
    subscription = this->queue().repeating(std::chrono::milliseconds(5), [&, text = std::string(100, 'x')] {
        subscription.reset();
        calls += text == std::string(100, 'x') ? 1 : 100;
    });
    this->runFor(std::chrono::milliseconds(30));
    EXPECT_EQ(calls, 1);
}

TYPED_TEST_P(MainQueueContract, ATaskMayReplaceItsOwnRepetition) {
    int later = 0;
    Platform::Subscription subscription;
    subscription = this->queue().repeating(std::chrono::milliseconds(5), [&] {
        this->order.emplace_back("first");
        subscription = this->queue().repeating(std::chrono::milliseconds(5), [&] { ++later; });
    });
    EXPECT_TRUE(this->world.runUntil([&] { return later == 3; }));
    EXPECT_THAT(this->order, testing::ElementsAre("first"));
}

TYPED_TEST_P(MainQueueContract, RepetitionsStandApart) {
    int calls = 0;
    auto ended = this->queue().repeating(std::chrono::milliseconds(5), this->note("ended"));
    const auto other = this->queue().repeating(std::chrono::milliseconds(5), [&] { ++calls; });
    ended = {};
    EXPECT_TRUE(this->world.runUntil([&] { return calls == 2; }));
    EXPECT_THAT(this->order, testing::IsEmpty());
}

TYPED_TEST_P(MainQueueContract, TasksFromOtherThreadsRunOnTheMainThreadInTheirOrder) {
    constexpr int count = 500;
    const auto mainThread = std::this_thread::get_id();
    std::vector<int> ran[2];
    int elsewhere = 0;
    const auto handIn = [&](int thread) {
        for (int number = 0; number < count; ++number) {
            this->queue().async([&, thread, number] {
                ran[thread].push_back(number);
                elsewhere += std::this_thread::get_id() == mainThread ? 0 : 1;
            });
        }
    };
    const std::jthread first(handIn, 0);
    const std::jthread second(handIn, 1);
    ASSERT_TRUE(this->world.runUntil([&] { return ran[0].size() == count && ran[1].size() == count; }));
    EXPECT_EQ(elsewhere, 0);
    EXPECT_TRUE(std::ranges::is_sorted(ran[0]));
    EXPECT_TRUE(std::ranges::is_sorted(ran[1]));
}

TYPED_TEST_P(MainQueueContract, ASourceRunsItsTaskAfterASignalAndNotInsideIt) {
    const auto source = this->queue().makeSource(this->note("task"));
    this->runFor(std::chrono::milliseconds(5));
    EXPECT_THAT(this->order, testing::IsEmpty());
    source->signal();
    EXPECT_THAT(this->order, testing::IsEmpty());
    EXPECT_TRUE(this->world.runUntil([this] { return this->order.size() == 1; }));
    source->signal();
    EXPECT_TRUE(this->world.runUntil([this] { return this->order.size() == 2; }));
}

TYPED_TEST_P(MainQueueContract, SignalsThatWaitAreOne) {
    const auto source = this->queue().makeSource(this->note("task"));
    for (int count = 0; count < 1000; ++count) {
        source->signal();
    }
    this->runFor(std::chrono::milliseconds(20));
    EXPECT_THAT(this->order, testing::ElementsAre("task"));
}

TYPED_TEST_P(MainQueueContract, ASignalInsideTheTaskRunsItAgain) {
    int calls = 0;
    std::unique_ptr<Platform::DispatchSource> source;
    source = this->queue().makeSource([&] {
        if (++calls < 3) {
            source->signal();
        }
    });
    source->signal();
    EXPECT_TRUE(this->world.runUntil([&] { return calls == 3; }));
}

TYPED_TEST_P(MainQueueContract, ASourceThatIsGoneRunsNothing) {
    auto source = this->queue().makeSource(this->note("task"));
    source->signal();
    source.reset();
    this->runFor(std::chrono::milliseconds(20));
    EXPECT_THAT(this->order, testing::IsEmpty());
}

TYPED_TEST_P(MainQueueContract, NoSignalOfAnotherThreadIsLost) {
    const auto mainThread = std::this_thread::get_id();
    std::atomic<int> sent = 0;
    int seen = 0;
    int elsewhere = 0;
    const auto source = this->queue().makeSource([&] {
        seen = sent;
        elsewhere += std::this_thread::get_id() == mainThread ? 0 : 1;
    });
    const std::jthread sender([&] {
        while (sent < 5000) {
            ++sent;
            source->signal();
        }
    });
    EXPECT_TRUE(this->world.runUntil([&] { return seen == 5000; }));
    EXPECT_EQ(elsewhere, 0);
}

TYPED_TEST_P(MainQueueContract, TasksThatWaitWhenTheQueueEndsAreDropped) {
    const auto held = std::make_shared<int>(0);
    const auto count = [held] { ++*held; };
    this->queue().async(count);
    this->queue().asyncAfter(std::chrono::milliseconds(1), count);
    auto subscription = this->queue().repeating(std::chrono::milliseconds(1), count);
    this->world.queue.reset();
    subscription = {};
    this->world.queue = std::make_unique<typename TypeParam::Queue>();
    this->runFor(std::chrono::milliseconds(20));
    EXPECT_EQ(*held, 0);
    EXPECT_EQ(held.use_count(), 2) << "only this test and the task that it made still hold it";
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, TasksRunInTheOrderInWhichTheyWereHandedIn,
                            NoTaskRunsInsideTheCallThatHandsItIn,
                            ATaskThatATaskHandsInComesAfterThoseThatWait, NoTaskRunsBeforeItsTime,
                            DelayedTasksRunInTheOrderOfTheirTimes, RepeatingBeginsAfterOneInterval,
                            RepeatingEndsWithItsSubscription, RepeatingMayEndBeforeItBegins,
                            ATaskMayEndItsOwnRepetition, ATaskMayReplaceItsOwnRepetition,
                            RepetitionsStandApart, TasksFromOtherThreadsRunOnTheMainThreadInTheirOrder,
                            ASourceRunsItsTaskAfterASignalAndNotInsideIt, SignalsThatWaitAreOne,
                            ASignalInsideTheTaskRunsItAgain, ASourceThatIsGoneRunsNothing,
                            NoSignalOfAnotherThreadIsLost, TasksThatWaitWhenTheQueueEndsAreDropped);

} // namespace TestSupport
