#include "platform/linux/system/ThreadWorkQueues.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

using LinuxPlatform::ThreadWorkQueues;

constexpr std::chrono::seconds deadline{20};

TEST(ThreadWorkQueues, SerialQueueKeepsTheOrderOnOneOtherThread) {
    ThreadWorkQueues queues;
    const auto queue = queues.makeSerial("com.curtain.microphone");
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::promise<void> done;
    for (int number = 0; number < 100; ++number) {
        queue->async([&, number] {
            order.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    queue->async([&] { done.set_value(); });
    ASSERT_EQ(done.get_future().wait_for(deadline), std::future_status::ready);
    std::vector<int> expected(100);
    for (int number = 0; number < 100; ++number) {
        expected[static_cast<std::size_t>(number)] = number;
    }
    EXPECT_EQ(order, expected);
    EXPECT_THAT(threads, testing::Each(threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(ThreadWorkQueues, UserInitiatedTasksDoNotWaitForABlockedOne) {
    ThreadWorkQueues queues;
    std::promise<void> release;
    std::promise<void> second;
    queues.userInitiated().async([&] { release.get_future().wait_for(deadline); });
    queues.userInitiated().async([&] { second.set_value(); });
    EXPECT_EQ(second.get_future().wait_for(deadline), std::future_status::ready);
    release.set_value();
}

TEST(ThreadWorkQueues, DestructionFinishesWhatHasBegunAndDropsTheRest) {
    ThreadWorkQueues queues;
    auto queue = queues.makeSerial("test");
    std::promise<void> hasBegun;
    std::atomic<bool> hasFinished = false;
    std::atomic<bool> hasRunDropped = false;
    auto held = std::make_shared<int>(0);
    std::promise<void> release;
    queue->async([&] {
        hasBegun.set_value();
        release.get_future().wait_for(deadline);
        hasFinished = true;
    });
    queue->async([&, held] { hasRunDropped = true; });
    ASSERT_EQ(hasBegun.get_future().wait_for(deadline), std::future_status::ready);
    auto destruction = std::async(std::launch::async, [&] { queue.reset(); });
    // What is dropped is let go before the wait for the running task.
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (held.use_count() > 1 && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(hasFinished);
    release.set_value();
    destruction.wait();
    EXPECT_TRUE(hasFinished);
    EXPECT_FALSE(hasRunDropped);
}

TEST(ThreadWorkQueues, ATaskMayHandInTheNext) {
    ThreadWorkQueues queues;
    const auto queue = queues.makeSerial("test");
    std::promise<void> done;
    queue->async([&] { queue->async([&] { done.set_value(); }); });
    EXPECT_EQ(done.get_future().wait_for(deadline), std::future_status::ready);
}

} // namespace
