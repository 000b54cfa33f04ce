#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kLong = std::chrono::hours(1);
constexpr std::chrono::milliseconds kNothing{0};

TEST(PendingLaunches, an_application_that_is_starting_does_not_begin_again) {
    PendingLaunches starts(kLong);
    const auto first = starts.begin("/a");
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->lasts());
    EXPECT_FALSE(starts.begin("/a"));
}

TEST(PendingLaunches, another_application_begins_all_the_same) {
    PendingLaunches starts(kLong);
    EXPECT_TRUE(starts.begin("/a"));
    EXPECT_TRUE(starts.begin("/b"));
    EXPECT_FALSE(starts.begin("/a"));
}

TEST(PendingLaunches, once_a_start_is_over_the_next_one_begins) {
    PendingLaunches starts(kLong);
    const auto first = starts.begin("/a");
    std::thread([&] { first->over(); }).join();
    EXPECT_FALSE(first->lasts());
    const auto second = starts.begin("/a");
    ASSERT_TRUE(second);
    EXPECT_FALSE(starts.begin("/a"));
    first->over();  // a late second call does not end the second start
    EXPECT_FALSE(starts.begin("/a"));
}

TEST(PendingLaunches, once_its_time_has_passed_the_next_one_begins) {
    PendingLaunches starts(kNothing);
    EXPECT_TRUE(starts.begin("/a"));
    EXPECT_TRUE(starts.begin("/a"));
}

TEST(PendingLaunches, a_start_that_awaits_an_answer_lasts_until_it_is_there) {
    PendingLaunches starts(kNothing);
    const auto first = starts.begin("/a");
    first->awaitAnswer();
    EXPECT_TRUE(first->lasts());
    EXPECT_FALSE(starts.begin("/a"));
    first->over();
    EXPECT_TRUE(starts.begin("/a"));
}

TEST(PendingLaunches, a_start_that_does_not_last_counts_while_it_awaits_an_answer) {
    PendingLaunches starts(kLong);
    const auto first = starts.begin("/a", false);
    EXPECT_FALSE(first->lasts());
    first->awaitAnswer();
    EXPECT_FALSE(starts.begin("/a", false));
    first->answered();
    EXPECT_TRUE(starts.begin("/a", false));
}

TEST(PendingLaunches, once_answered_a_start_lasts_for_the_rest_of_its_time) {
    for (const auto& [time, lasts] : {std::pair(kNothing, false), {kLong, true}}) {
        PendingLaunches starts(time);
        const auto start = starts.begin("/a");
        start->awaitAnswer();
        start->answered();
        EXPECT_EQ(start->lasts(), lasts);
    }
}

TEST(PendingLaunches, an_unnoticed_start_keeps_no_other_from_beginning) {
    PendingLaunches starts(kLong);
    EXPECT_TRUE(starts.beginUnnoticed()->lasts());
    EXPECT_TRUE(starts.begin("/a"));
}

}  // namespace
}  // namespace tavo
