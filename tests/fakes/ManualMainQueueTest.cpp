#include <memory>

#include <gtest/gtest.h>

#include "tests/contracts/MainQueueContract.h"
#include "tests/fakes/ManualMainQueue.h"

namespace tavo {
namespace {

using std::chrono::milliseconds;

struct ManualMainQueueRig {
    ManualMainQueueRig() : ownQueue(std::make_unique<ManualMainQueue>()) {}

    MainQueue& queue() { return *ownQueue; }
    void end() { ownQueue.reset(); }

    // Moves the clock in small steps, so that blocks that are due much later do not run. Other
    // threads may still be adding blocks.
    bool runUntil(const std::function<bool()>& condition) {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition() && std::chrono::steady_clock::now() < giveUp) {
            ownQueue->advance(milliseconds(1));
            std::this_thread::yield();
        }
        return condition();
    }

    void settle() {
        if (ownQueue) {
            ownQueue->run();
        }
    }

    std::unique_ptr<ManualMainQueue> ownQueue;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Manual, MainQueueContract, ManualMainQueueRig);

TEST(ManualMainQueue, time_passes_only_when_told) {
    ManualMainQueue queue;
    std::vector<milliseconds> moments;
    const auto note = [&] { moments.push_back(queue.now()); };
    queue.asyncAfter(milliseconds(250), note);
    queue.asyncAfter(milliseconds(100), [&] {
        note();
        queue.asyncAfter(milliseconds(100), note);
    });
    queue.run();
    EXPECT_TRUE(moments.empty());
    queue.advance(milliseconds(249));
    EXPECT_EQ(moments, (std::vector{milliseconds(100), milliseconds(200)}));
    queue.advance(milliseconds(1));
    EXPECT_EQ(moments.back(), milliseconds(250));
    EXPECT_EQ(queue.waiting(), 0U);
}

}  // namespace
}  // namespace tavo
