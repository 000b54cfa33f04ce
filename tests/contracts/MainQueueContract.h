// Tests of what every implementation of the port MainQueue promises.
//
// They are given a rig, which sets one implementation up for them. A rig has: MainQueue& queue();
// void end(), which ends the queue; bool runUntil(condition), which lets the main thread work until
// the condition holds and answers whether it came to hold; void settle(), which lets it do all that
// is due now.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/MainQueue.h"

namespace tavo {

template<typename Rig>
class MainQueueContract : public testing::Test {
protected:
    MainQueue& queue() { return rig_.queue(); }

    // A block that adds `name` to notes_.
    std::function<void()> note(std::string name) {
        return [this, name = std::move(name)] { notes_.push_back(name); };
    }

    bool runUntilNotes(std::size_t count) {
        return rig_.runUntil([this, count] { return notes_.size() >= count; });
    }

    Rig rig_;
    std::vector<std::string> notes_;
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, a_block_runs_later_and_once) {
    this->queue().async(this->note("block"));
    EXPECT_TRUE(this->notes_.empty());
    ASSERT_TRUE(this->runUntilNotes(1));
    this->rig_.settle();
    EXPECT_EQ(this->notes_, std::vector<std::string>{"block"});
}

TYPED_TEST_P(MainQueueContract, blocks_run_in_the_order_given) {
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(std::to_string(i));
        this->queue().async(this->note(expected.back()));
    }
    ASSERT_TRUE(this->runUntilNotes(100));
    EXPECT_EQ(this->notes_, expected);
}

TYPED_TEST_P(MainQueueContract, no_delay_is_the_same_as_now) {
    using std::chrono::milliseconds;
    this->queue().async(this->note("1"));
    this->queue().asyncAfter(milliseconds(0), this->note("2"));
    this->queue().async(this->note("3"));
    this->queue().asyncAfter(milliseconds(-5), this->note("4"));
    ASSERT_TRUE(this->runUntilNotes(4));
    EXPECT_EQ(this->notes_, (std::vector<std::string>{"1", "2", "3", "4"}));
}

TYPED_TEST_P(MainQueueContract, the_shorter_delay_comes_first) {
    using std::chrono::milliseconds;
    // Far enough apart for a machine that stops for a moment between two of these calls.
    this->queue().asyncAfter(milliseconds(600), this->note("600"));
    this->queue().asyncAfter(milliseconds(200), this->note("200"));
    this->queue().asyncAfter(milliseconds(400), this->note("400"));
    this->queue().async(this->note("now"));
    ASSERT_TRUE(this->runUntilNotes(4));
    EXPECT_EQ(this->notes_, (std::vector<std::string>{"now", "200", "400", "600"}));
}

TYPED_TEST_P(MainQueueContract, a_block_that_is_not_due_waits) {
    this->queue().asyncAfter(std::chrono::hours(1), this->note("late"));
    this->queue().async(this->note("now"));
    ASSERT_TRUE(this->runUntilNotes(1));
    this->rig_.settle();
    EXPECT_EQ(this->notes_, std::vector<std::string>{"now"});
}

TYPED_TEST_P(MainQueueContract, a_block_may_add_blocks) {
    this->queue().async([this] {
        this->queue().async(this->note("inner"));
        this->notes_.push_back("outer");
    });
    ASSERT_TRUE(this->runUntilNotes(2));
    EXPECT_EQ(this->notes_, (std::vector<std::string>{"outer", "inner"}));
}

TYPED_TEST_P(MainQueueContract, blocks_from_other_threads_run_on_the_main_thread) {
    constexpr int kThreads = 4;
    constexpr int kBlocks = 50;
    int ran = 0;  // unguarded: only the main thread may touch it
    std::atomic<int> elsewhere = 0;
    const std::thread::id main = std::this_thread::get_id();
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kBlocks; ++i) {
                this->queue().async([&] {
                    ++ran;
                    elsewhere += std::this_thread::get_id() == main ? 0 : 1;
                });
            }
        });
    }
    EXPECT_TRUE(this->rig_.runUntil([&] { return ran == kThreads * kBlocks; }));
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(elsewhere, 0);
}

TYPED_TEST_P(MainQueueContract, blocks_still_waiting_at_the_end_are_dropped) {
    const auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    bool ran = false;
    const auto block = [&ran, hold = held] { ran = true; };
    this->queue().async(block);
    this->queue().asyncAfter(std::chrono::milliseconds(1), block);
    const long usesWhileWaiting = watched.use_count();
    this->rig_.end();
    this->rig_.settle();
    EXPECT_FALSE(ran);
    EXPECT_EQ(watched.use_count(), usesWhileWaiting - 2);  // both blocks have released `held`
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, a_block_runs_later_and_once,
                            blocks_run_in_the_order_given, no_delay_is_the_same_as_now,
                            the_shorter_delay_comes_first, a_block_that_is_not_due_waits,
                            a_block_may_add_blocks,
                            blocks_from_other_threads_run_on_the_main_thread,
                            blocks_still_waiting_at_the_end_are_dropped);

}  // namespace tavo
