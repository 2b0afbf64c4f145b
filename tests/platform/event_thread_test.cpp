#include <atomic>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/message_queue.h"
#include "platform/run_program.h"
#include "platform/thread.h"

namespace tarno2 {
namespace {

TEST(Event, StaysSignalledForEveryWaiterUntilReset) {
    Event event;
    ASSERT_TRUE(event.valid());
    EXPECT_EQ(event.wait(0), WaitResult::TimedOut);
    EXPECT_EQ(event.reset(), 0U);
    EXPECT_TRUE(event.set());
    EXPECT_EQ(event.wait(kWaitForever), WaitResult::Signalled);
    EXPECT_EQ(event.wait(0), WaitResult::Signalled) << "waiting must not consume";
    EXPECT_GE(event.reset(), 1U);
    EXPECT_EQ(event.wait(1), WaitResult::TimedOut);
}

TEST(Event, IsSharedThroughItsNumber) {
    Event owner;
    {
        Event borrowed = Event::wrap(owner.number());
        EXPECT_TRUE(borrowed.set());
        EXPECT_EQ(borrowed.number(), owner.number());
    }
    EXPECT_EQ(owner.wait(0), WaitResult::Signalled) << "the borrower must not have closed it";
    Event moved = std::move(owner);
    EXPECT_FALSE(owner.valid());
    EXPECT_EQ(owner.wait(0), WaitResult::Failed);
    EXPECT_EQ(moved.wait(0), WaitResult::Signalled);
    EXPECT_EQ(Event::wrap(0xFFFFFFFFU).wait(0), WaitResult::Failed);
    EXPECT_EQ(Event::wrap(0xFFFFFFFFU).reset(), 0U);
}

TEST(Event, EitherOfTwoTellsWhich) {
    Event a;
    Event b;
    EXPECT_EQ(Event::waitEither(a, b, 0).result, WaitResult::TimedOut);
    const std::pair<bool, bool> cases[] = {{true, false}, {false, true}, {true, true}};
    for (const auto& [first, second] : cases) {
        a.reset();
        b.reset();
        EXPECT_TRUE(!first || a.set());
        EXPECT_TRUE(!second || b.set());
        const auto which = Event::waitEither(a, b, kWaitForever);
        EXPECT_EQ(which.result, WaitResult::Signalled);
        EXPECT_EQ(which.first, first);
        EXPECT_EQ(which.second, second);
    }
    EXPECT_EQ(Event::waitEither(a, Event::wrap(0xFFFFFFFFU), 0).result, WaitResult::Failed);
}

TEST(Thread, RunsItsBodyOnceResumed) {
    std::atomic<int> runs{0};
    Thread thread;
    EXPECT_FALSE(thread.joinable());
    ASSERT_TRUE(thread.create([&] { ++runs; }));
    EXPECT_STRNE(describe(thread.raisePriority()), "");
    EXPECT_EQ(runs, 0);
    thread.resume();
    thread.resume();
    Thread moved = std::move(thread);
    moved.join();
    EXPECT_FALSE(moved.joinable());
    EXPECT_EQ(runs, 1);
    {
        Thread dropped;
        ASSERT_TRUE(dropped.create([&] { ++runs; }));
    }
    EXPECT_EQ(runs, 2) << "a thread that goes out of scope runs to its end";
    Thread none;
    EXPECT_EQ(none.raisePriority(), PriorityResult::Unchanged);
    none.join();
}

TEST(Thread, WhatItsBodyThrowsEndsItAlone) {
    testing::internal::CaptureStderr();
    Thread thread;
    ASSERT_TRUE(thread.create([] { throw std::bad_alloc(); }));
    thread.join();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "A thread ended: not enough memory\n");
}

TEST(Program, WhatItThrowsIsALineAndItsExitStatus) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(runProgram("a", 2, [] { return 0; }), 0);
    EXPECT_EQ(runProgram("b", 2, []() -> int { throw std::bad_alloc(); }), 2);
    EXPECT_EQ(runProgram("c", 1, []() -> int { throw std::runtime_error("words"); }), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "b: not enough memory\nc: words\n");
}

TEST(MessageQueue, RunsPostedWorkInOrderAndThenEnds) {
    MessageQueue queue;
    std::vector<int> order;
    Thread poster;
    ASSERT_TRUE(poster.create([&] {
        for (int i = 0; i < 100; ++i) {
            queue.post([&order, i] { order.push_back(i); });
        }
        queue.quit();
        queue.post([&order] { order.push_back(-1); });
    }));
    poster.resume();
    queue.run();
    poster.join();
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(order.front() == 0 && order.back() == 99);
    queue.quit();
    queue.run();
    EXPECT_EQ(order.back(), -1) << "work posted after quit waits for the next run";
}

TEST(MessageQueue, TicksMakeUpForTimeThatWorkTook) {
    MessageQueue queue;
    constexpr uint32_t kPeriod = 2;
    constexpr uint32_t kTicks = 20;
    uint32_t ticks = 0;
    const uint64_t start = tickCount();
    queue.startTimer(kPeriod, [&] {
        if (++ticks == kTicks) {
            queue.stopTimer();
            queue.quit();
        }
    });
    queue.post([&] { sleepMilliseconds(kPeriod * (kTicks + 2)); });  // long work: all ticks come late, none is lost
    int other = 0;
    queue.post([&] { other = static_cast<int>(ticks); });
    queue.run();
    EXPECT_EQ(ticks, kTicks);
    EXPECT_LE(other, 1) << "posted work takes turns with late ticks";
    EXPECT_GE(tickCount() - start, kPeriod * kTicks);
}

}  // namespace
}  // namespace tarno2
