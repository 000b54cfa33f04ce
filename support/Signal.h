// A change signal with subscriptions that end themselves.
//
// Subscribing returns a Subscription; keeping it is staying subscribed, dropping it is leaving.
// Inside a callback it is safe to subscribe, to leave, to emit again, and to destroy the signal.
// One thread: the one that owns the signal.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tavo {

// Keeps a subscription alive. Movable; empty after a move. May outlive its signal.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> hold) : hold_(std::move(hold)) {}

    void end() { hold_.reset(); }

private:
    std::shared_ptr<void> hold_;
};

template<typename... Arguments>
class Signal {
public:
    using Callback = std::function<void(Arguments...)>;

    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    // A subscriber that joins while a change is being announced hears of the next one first.
    Subscription subscribe(Callback callback) {
        auto subscriber = std::make_shared<Callback>(std::move(callback));
        subscribers_.push_back(subscriber);
        return Subscription(std::move(subscriber));
    }

    // Calls the subscribers in the order in which they joined.
    void emit(Arguments... arguments) {
        std::erase_if(subscribers_, [](const auto& subscriber) { return subscriber.expired(); });
        // A copy, so that callbacks may change the list, or end the signal altogether.
        const auto announced = subscribers_;
        for (const auto& subscriber : announced) {
            if (const auto callback = subscriber.lock()) {
                (*callback)(arguments...);
            }
        }
    }

private:
    std::vector<std::weak_ptr<Callback>> subscribers_;
};

}  // namespace tavo
