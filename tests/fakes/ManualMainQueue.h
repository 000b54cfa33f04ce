// A main queue whose clock stands still until a test moves it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/MainQueue.h"

namespace tavo {

// Blocks may be added from any thread; they run on the thread that calls run() or advance().
class ManualMainQueue final : public MainQueue {
public:
    using Milliseconds = std::chrono::milliseconds;

    void async(std::function<void()> block) override {
        asyncAfter(Milliseconds(0), std::move(block));
    }

    void asyncAfter(Milliseconds delay, std::function<void()> block) override {
        const std::lock_guard lock(mutex_);
        blocks_.emplace(std::pair(now_ + std::max(delay, Milliseconds(0)), nextTurn_++),
                        std::move(block));
    }

    // Runs the blocks that are due, and those that they add without a delay, until none is left.
    void run() { advance(Milliseconds(0)); }

    // Moves the clock on by `time`, and runs each block when the clock reaches its time.
    void advance(Milliseconds time) {
        const Milliseconds end = now() + time;
        while (const auto block = takeDueBefore(end)) {
            block();
        }
        const std::lock_guard lock(mutex_);
        now_ = end;
    }

    // The time that has passed on this clock since the queue was made.
    [[nodiscard]] Milliseconds now() const {
        const std::lock_guard lock(mutex_);
        return now_;
    }

    // The number of blocks that have not run yet.
    [[nodiscard]] std::size_t waiting() const {
        const std::lock_guard lock(mutex_);
        return blocks_.size();
    }

private:
    std::function<void()> takeDueBefore(Milliseconds end) {
        const std::lock_guard lock(mutex_);
        const auto first = blocks_.begin();
        if (first == blocks_.end() || first->first.first > end) {
            return {};
        }
        now_ = std::max(now_, first->first.first);
        std::function<void()> block = std::move(first->second);
        blocks_.erase(first);
        return block;
    }

    mutable std::mutex mutex_;
    Milliseconds now_{0};
    std::uint64_t nextTurn_ = 0;
    std::map<std::pair<Milliseconds, std::uint64_t>, std::function<void()>> blocks_;
};

}  // namespace tavo
