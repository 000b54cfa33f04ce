#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "support/Signal.h"

namespace tavo {
namespace {

TEST(Signal, calls_subscribers_in_the_order_in_which_they_joined) {
    Signal<> signal;
    std::string calls;
    const auto first = signal.subscribe([&] { calls += "a"; });
    const auto second = signal.subscribe([&] { calls += "b"; });
    signal.emit();
    signal.emit();
    EXPECT_EQ(calls, "abab");
}

TEST(Signal, hands_over_its_arguments) {
    Signal<int, std::string> signal;
    std::string heard;
    const auto subscription = signal.subscribe(
        [&](int number, const std::string& text) { heard = text + std::to_string(number); });
    signal.emit(7, "n");
    EXPECT_EQ(heard, "n7");
}

TEST(Signal, a_dropped_subscription_hears_nothing_more) {
    Signal<> signal;
    int calls = 0;
    {
        const auto subscription = signal.subscribe([&] { ++calls; });
        signal.emit();
    }
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, a_moved_subscription_stays_subscribed) {
    Signal<> signal;
    int calls = 0;
    auto subscription = signal.subscribe([&] { ++calls; });
    const auto moved = std::move(subscription);
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, a_subscriber_may_leave_while_it_is_being_called) {
    Signal<> signal;
    int calls = 0;
    Subscription subscription;
    subscription = signal.subscribe([&] {
        ++calls;
        subscription.end();
    });
    signal.emit();
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, a_subscriber_that_another_one_ended_is_not_called) {
    Signal<> signal;
    int calls = 0;
    std::optional<Subscription> second;
    const auto first = signal.subscribe([&] { second.reset(); });
    second = signal.subscribe([&] { ++calls; });
    signal.emit();
    EXPECT_EQ(calls, 0);
}

TEST(Signal, a_subscriber_that_joins_during_an_announcement_hears_the_next_one) {
    Signal<> signal;
    int calls = 0;
    std::optional<Subscription> late;
    const auto first = signal.subscribe([&] {
        if (!late) {
            late = signal.subscribe([&] { ++calls; });
        }
    });
    signal.emit();
    EXPECT_EQ(calls, 0);
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, may_be_destroyed_by_a_subscriber) {
    auto signal = std::make_unique<Signal<>>();
    int calls = 0;
    const auto first = signal->subscribe([&] { signal.reset(); });
    const auto second = signal->subscribe([&] { ++calls; });
    signal->emit();
    EXPECT_EQ(signal, nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(Signal, may_be_emitted_again_by_a_subscriber) {
    Signal<> signal;
    int calls = 0;
    const auto subscription = signal.subscribe([&] {
        if (++calls < 3) {
            signal.emit();
        }
    });
    signal.emit();
    EXPECT_EQ(calls, 3);
}

TEST(Signal, a_subscription_may_outlive_its_signal) {
    const auto captured = std::make_shared<int>();
    Subscription subscription;
    {
        Signal<> signal;
        subscription = signal.subscribe([captured] {});
    }
    EXPECT_EQ(captured.use_count(), 2);
    subscription.end();
    EXPECT_EQ(captured.use_count(), 1);
}

}  // namespace
}  // namespace tavo
