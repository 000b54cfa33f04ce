// How an adapter's thread hands its answers to the main thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "platform/MainQueue.h"

namespace tavo {

// Posts blocks to a main queue. Its destructor drops the blocks that still wait, so a block may use
// whatever is destroyed after the poster. Construct and destroy it on the main thread.
class MainThreadPoster {
public:
    // `queue` must outlive this object.
    explicit MainThreadPoster(MainQueue& queue) : queue_(queue) {}

    // Like MainQueue::async() and asyncAfter(). May be called on any thread while this object
    // lives.
    void post(std::function<void()> block) { queue_.async(whileAlive(std::move(block))); }
    void postAfter(std::chrono::milliseconds delay, std::function<void()> block) {
        queue_.asyncAfter(delay, whileAlive(std::move(block)));
    }

private:
    [[nodiscard]] std::function<void()> whileAlive(std::function<void()> block) const {
        return [alive = std::weak_ptr(alive_), block = std::move(block)] {
            if (!alive.expired()) {
                block();
            }
        };
    }

    MainQueue& queue_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>();
};

}  // namespace tavo
