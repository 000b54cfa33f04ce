// Work for the main thread, now or later.
#pragma once

#include <chrono>
#include <functional>

namespace tavo {

// async() and asyncAfter() may be called on any thread and return at once; the block runs on the
// main thread, never inside the call. Blocks given for the same moment run in the order given.
// Blocks that still wait when the queue is destroyed are dropped.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    virtual void async(std::function<void()> block) = 0;
    virtual void asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) = 0;
};

}  // namespace tavo
