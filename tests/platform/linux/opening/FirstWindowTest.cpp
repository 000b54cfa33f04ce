#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/opening/FirstWindow.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/ManualMainQueue.h"

namespace tavo {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

class FirstWindowTest : public testing::Test {
protected:
    static std::shared_ptr<PendingLaunch> start() {
        return std::make_shared<PendingLaunch>(PendingLaunch::Clock::now() + hours(1));
    }
    void await() {
        window_->await({7, "app"}, start_, [this] { ++seen_; });
    }
    void show() { running_.running.push_back({{7, "app"}, {}}); }

    // Tells of changed windows as a window system does, and runs what is due; the time stands
    // still.
    void tell() {
        running_.announceWindows();
        queue_.run();
    }

    ManualMainQueue queue_;
    FakeRunningApplications running_;
    int seen_ = 0;
    std::shared_ptr<PendingLaunch> start_ = start();
    std::optional<FirstWindow> window_{std::in_place, queue_, &running_};
};

TEST_F(FirstWindowTest, a_window_that_is_there_is_seen_once_and_ends_the_start) {
    show();
    await();
    EXPECT_EQ(seen_, 0);  // never called inside await()
    queue_.run();
    EXPECT_EQ(seen_, 1);
    EXPECT_FALSE(start_->lasts());
    EXPECT_FALSE(running_.isSubscribedTo());
    EXPECT_EQ(queue_.waiting(), 0U);
}

TEST_F(FirstWindowTest, a_window_is_seen_as_soon_as_the_window_system_tells_of_it) {
    await();
    queue_.run();
    tell();  // as if another application's window had changed
    EXPECT_EQ(seen_, 0);
    show();
    running_.announceWindows();
    EXPECT_EQ(seen_, 0);  // never called inside the window system's call
    queue_.run();
    EXPECT_EQ(seen_, 1);
    EXPECT_FALSE(running_.isSubscribedTo());
}

TEST_F(FirstWindowTest,
       where_windows_are_not_listed_the_first_change_ends_the_start_and_nothing_is_seen) {
    running_.lists = false;
    await();
    queue_.advance(milliseconds(5000));
    EXPECT_EQ(seen_, 0);
    EXPECT_TRUE(start_->lasts());
    tell();
    EXPECT_EQ(seen_, 0);
    EXPECT_FALSE(start_->lasts());
    EXPECT_FALSE(running_.isSubscribedTo());
}

TEST_F(FirstWindowTest, several_changes_at_once_are_one_question) {
    await();
    queue_.run();
    const std::size_t before = queue_.waiting();
    running_.announceWindows();
    running_.announceWindows();
    EXPECT_EQ(queue_.waiting(), before + 1);
}

TEST_F(FirstWindowTest, a_window_that_is_named_late_is_seen_within_five_seconds) {
    await();
    queue_.run();
    tell();
    show();
    queue_.advance(milliseconds(4999));
    EXPECT_EQ(seen_, 0);
    queue_.advance(milliseconds(1));
    EXPECT_EQ(seen_, 1);
    EXPECT_EQ(queue_.waiting(), 0U);
}

TEST_F(FirstWindowTest, each_start_has_its_own_window) {
    const std::shared_ptr<PendingLaunch> other = start();
    int otherSeen = 0;
    await();
    window_->await({8, "other"}, other, [&] { ++otherSeen; });
    queue_.run();
    running_.running.push_back({{8, "other"}, {}});
    tell();
    EXPECT_EQ(otherSeen, 1);
    EXPECT_EQ(seen_, 0);
    EXPECT_TRUE(running_.isSubscribedTo());
    show();
    tell();
    EXPECT_EQ(otherSeen, 1);
    EXPECT_EQ(seen_, 1);
    EXPECT_FALSE(running_.isSubscribedTo());
}

TEST_F(FirstWindowTest, nothing_is_subscribed_to_or_queued_once_the_start_is_over) {
    await();
    queue_.run();
    EXPECT_TRUE(running_.isSubscribedTo());
    start_->over();
    show();
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(seen_, 0);
    EXPECT_FALSE(running_.isSubscribedTo());
    EXPECT_EQ(queue_.waiting(), 0U);
}

TEST_F(FirstWindowTest, nothing_is_seen_after_its_end) {
    await();
    queue_.run();
    window_.reset();
    EXPECT_FALSE(running_.isSubscribedTo());
    show();
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(seen_, 0);
}

TEST_F(FirstWindowTest, where_windows_cannot_be_seen_nothing_is_queued) {
    const FirstWindow window(queue_, nullptr);
    window.await({7, "app"}, start_, [this] { ++seen_; });
    EXPECT_EQ(queue_.waiting(), 0U);
    EXPECT_TRUE(start_->lasts());
}

}  // namespace
}  // namespace tavo
