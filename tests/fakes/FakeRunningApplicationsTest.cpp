#include <gtest/gtest.h>

#include "tests/contracts/RunningApplicationsContract.h"
#include "tests/fakes/FakeRunningApplications.h"

namespace tavo {
namespace {

struct FakeRig {
    static constexpr bool kTellsProcesses = true;

    static void turnToLauncher() {}

    RunningApplications& running() { return fake_; }

    std::int32_t start(const std::string& identifier) {
        fake_.running.push_back({{++last_, identifier}, program(last_)});
        fake_.announceWindows();
        return last_;
    }
    void end(std::int32_t process) {
        std::erase_if(fake_.running, [&](const FakeRunningApplications::Known& known) {
            return known.application.processIdentifier == process;
        });
    }
    static std::string program(std::int32_t process) { return "/bin/" + std::to_string(process); }

    static bool comesTrue(const std::function<bool()>& condition) { return condition(); }

    // Whether the latest activation of an application that still runs was one of `process`.
    [[nodiscard]] bool isInFront(std::int32_t process) const {
        std::int32_t front = 0;
        for (const RunningApplication& application : fake_.activated()) {
            for (const FakeRunningApplications::Known& known : fake_.running) {
                front = known.application == application ? application.processIdentifier : front;
            }
        }
        return front == process;
    }

    FakeRunningApplications fake_;
    std::int32_t last_ = 10;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RunningApplicationsContract, FakeRig);

TEST(FakeRunningApplications, answers_what_it_was_given_in_that_order) {
    FakeRunningApplications fake;
    fake.running = {{{11, "a"}, "/bin/a"}, {{12, "b"}, {}}, {{13, "a"}, {}}};
    EXPECT_EQ(fake.withIdentifier("a"), (std::vector<RunningApplication>{{11, "a"}, {13, "a"}}));
    EXPECT_TRUE(fake.withIdentifier("c").empty());
    EXPECT_EQ(fake.withProcess(12), (RunningApplication{12, "b"}));
    EXPECT_EQ(fake.withProcess(99), std::nullopt);
    EXPECT_EQ(fake.executablePath({11, "a"}), "/bin/a");
    EXPECT_EQ(fake.executablePath({12, "b"}), std::nullopt);
    EXPECT_EQ(fake.identifiersAsked, (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(fake.processesAsked, (std::vector<std::int32_t>{12, 99}));
}

TEST(FakeRunningApplications, user_requests_and_subscribers_are_known) {
    FakeRunningApplications fake;
    fake.noteUserRequest("a");
    fake.noteUserRequest("b");
    EXPECT_EQ(fake.userRequests, (std::vector<std::string>{"a", "b"}));
    EXPECT_FALSE(fake.isSubscribedTo());
    Subscription subscription = fake.onWindowsChanged([] {});
    EXPECT_TRUE(fake.isSubscribedTo());
    subscription.end();
    EXPECT_FALSE(fake.isSubscribedTo());
}

TEST(FakeRunningApplications, to_ask_for_a_window_is_no_look_up) {
    FakeRunningApplications fake;
    fake.running = {{{11, "a"}, {}}};
    EXPECT_TRUE(fake.showsWindow({0, "a"}));
    EXPECT_TRUE(fake.showsWindow({11, ""}));
    EXPECT_FALSE(fake.showsWindow({12, "b"}));
    EXPECT_EQ(fake.windowsAsked, (std::vector<RunningApplication>{{0, "a"}, {11, ""}, {12, "b"}}));
    EXPECT_TRUE(fake.identifiersAsked.empty());
    EXPECT_TRUE(fake.processesAsked.empty());
}

TEST(FakeRunningApplications, activations_are_recorded_even_of_an_application_that_is_gone) {
    FakeRunningApplications fake;
    fake.activateAllWindows({5, "gone"});
    EXPECT_EQ(fake.activated(), (std::vector<RunningApplication>{{5, "gone"}}));
}

}  // namespace
}  // namespace tavo
