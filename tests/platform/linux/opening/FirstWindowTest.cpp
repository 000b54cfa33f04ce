#include <gtest/gtest.h>

#include "platform/linux/opening/FirstWindow.h"
#include "tests/fakes/ManualMainQueue.h"

namespace tavo {
namespace {

using std::chrono::milliseconds;

class FirstWindowTest : public testing::Test {
protected:
    void await() {
        window_->await({7, "app"}, start_, [this] { ++seen_; });
    }

    ManualMainQueue queue_;
    bool shown_ = false;
    int asked_ = 0;
    int seen_ = 0;
    std::shared_ptr<PendingLaunch> start_ =
        std::make_shared<PendingLaunch>(PendingLaunch::Clock::now() + std::chrono::hours(1));
    std::optional<FirstWindow> window_{std::in_place, &queue_,
                                       [this](const RunningApplication& application) {
                                           EXPECT_EQ(application, (RunningApplication{7, "app"}));
                                           ++asked_;
                                           return shown_;
                                       }};
};

TEST_F(FirstWindowTest, a_window_that_is_there_is_seen_once_and_ends_the_start) {
    shown_ = true;
    await();
    EXPECT_EQ(asked_, 0);  // never inside the call
    queue_.run();
    EXPECT_EQ(seen_, 1);
    EXPECT_FALSE(start_->lasts());
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(seen_, 1);
    EXPECT_EQ(asked_, 1);
}

TEST_F(FirstWindowTest, is_asked_for_ten_times_a_second_at_first_and_twice_a_second_later) {
    await();
    queue_.advance(milliseconds(1999));
    EXPECT_EQ(asked_, 20);
    queue_.advance(milliseconds(1));
    EXPECT_EQ(asked_, 21);
    queue_.advance(milliseconds(10000));
    EXPECT_EQ(asked_, 41);
    shown_ = true;
    queue_.advance(milliseconds(500));
    EXPECT_EQ(seen_, 1);
}

TEST_F(FirstWindowTest, is_not_asked_for_once_the_start_is_over) {
    await();
    queue_.advance(milliseconds(300));
    const int before = asked_;
    start_->over();
    shown_ = true;
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(asked_, before);
    EXPECT_EQ(seen_, 0);
    EXPECT_EQ(queue_.waiting(), 0U);
}

TEST_F(FirstWindowTest, is_not_asked_for_once_nobody_waits) {
    await();
    queue_.run();
    window_.reset();
    shown_ = true;
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(asked_, 1);
    EXPECT_EQ(seen_, 0);
}

TEST_F(FirstWindowTest, where_nobody_can_tell_nothing_is_queued) {
    for (const FirstWindow& window :
         {FirstWindow(&queue_, {}), FirstWindow(nullptr, [](const auto&) { return true; })}) {
        window.await({7, "app"}, start_, [this] { ++seen_; });
    }
    EXPECT_EQ(queue_.waiting(), 0U);
    EXPECT_TRUE(start_->lasts());
}

}  // namespace
}  // namespace tavo
