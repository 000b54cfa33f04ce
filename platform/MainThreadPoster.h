// How an adapter's thread hands its answers to the main thread.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/MainQueue.h"

namespace tavo {

// Posts blocks to a main queue until it ends; those still waiting then are dropped. So a block may
// use what ends later than this. Made and ended on the main thread.
class MainThreadPoster {
public:
    // `queue` outlives this.
    explicit MainThreadPoster(MainQueue& queue) : queue_(queue) {}

    // Any thread.
    void post(std::function<void()> block) {
        queue_.async([alive = std::weak_ptr(alive_), block = std::move(block)] {
            if (!alive.expired()) {
                block();
            }
        });
    }

private:
    MainQueue& queue_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>();
};

}  // namespace tavo
