// The promises of every RunningApplications that can see windows.
//
// A rig has: RunningApplications& running(); std::int32_t start(identifier), which starts one
// application of that identifier with a window and answers its process; void end(process);
// std::string program(process), the path of the program that the process runs; bool
// isInFront(process), whether its window is in front or soon will be; bool comesTrue(condition),
// whether that comes true while events are delivered; constexpr bool kTellsProcesses, whether
// applications are found by process as well as by identifier; void turnToLauncher(), after which
// the user's last act was in this program.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/RunningApplications.h"

namespace tavo {

template<typename Rig>
class RunningApplicationsContract : public testing::Test {
protected:
    static constexpr const char* kFirst = "org.example.First.desktop";
    static constexpr const char* kSecond = "org.example.Second.desktop";

    std::vector<std::int32_t> processes(const std::string& identifier) {
        std::vector<std::int32_t> found;
        for (const RunningApplication& application : rig_.running().withIdentifier(identifier)) {
            found.push_back(application.processIdentifier);
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    // The process identifier in an answer of withIdentifier(): `process`, or 0 where applications
    // are found by identifier alone.
    static std::int32_t told(std::int32_t process) { return Rig::kTellsProcesses ? process : 0; }

    Rig rig_;
};

TYPED_TEST_SUITE_P(RunningApplicationsContract);

TYPED_TEST_P(RunningApplicationsContract, what_does_not_run_is_not_found) {
    this->rig_.start(this->kSecond);
    EXPECT_TRUE(this->processes(this->kFirst).empty());
    EXPECT_TRUE(this->processes("").empty());
    EXPECT_EQ(this->rig_.running().withProcess(0), std::nullopt);
    EXPECT_EQ(this->rig_.running().withProcess(-1), std::nullopt);
    EXPECT_EQ(this->rig_.running().withProcess(0x7fffffff), std::nullopt);
}

TYPED_TEST_P(RunningApplicationsContract, what_runs_is_found_by_its_identifier) {
    const std::int32_t first = this->rig_.start(this->kFirst);
    const std::int32_t second = this->rig_.start(this->kSecond);
    const auto found = this->rig_.running().withIdentifier(this->kFirst);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front(), (RunningApplication{this->told(first), this->kFirst}));
    EXPECT_EQ(this->processes(this->kSecond), std::vector{this->told(second)});
}

TYPED_TEST_P(RunningApplicationsContract, what_runs_twice_is_found_twice) {
    std::vector<std::int32_t> started = {this->rig_.start(this->kFirst),
                                         this->rig_.start(this->kFirst)};
    std::sort(started.begin(), started.end());
    if constexpr (!TypeParam::kTellsProcesses) {
        started = {0};
    }
    EXPECT_EQ(this->processes(this->kFirst), started);
}

TYPED_TEST_P(RunningApplicationsContract, what_runs_is_found_by_its_process) {
    const std::int32_t process = this->rig_.start(this->kFirst);
    const auto found = this->rig_.running().withProcess(process);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->processIdentifier, process);
    EXPECT_EQ(this->rig_.running().executablePath(*found), this->rig_.program(process));
}

TYPED_TEST_P(RunningApplicationsContract, what_was_found_by_its_identifier_tells_its_program) {
    const std::int32_t process = this->rig_.start(this->kFirst);
    const auto found = this->rig_.running().withIdentifier(this->kFirst);
    ASSERT_EQ(found.size(), 1U);
    const auto program = this->rig_.running().executablePath(found.front());
    EXPECT_EQ(program.has_value(), TypeParam::kTellsProcesses);
    EXPECT_EQ(program.value_or(this->rig_.program(process)), this->rig_.program(process));
}

TYPED_TEST_P(RunningApplicationsContract, what_has_ended_is_not_found_any_more) {
    const std::int32_t process = this->rig_.start(this->kFirst);
    const auto before = this->rig_.running().withProcess(process);
    this->rig_.end(process);
    EXPECT_TRUE(this->processes(this->kFirst).empty());
    EXPECT_EQ(this->rig_.running().withProcess(process), std::nullopt);
    ASSERT_TRUE(before);
    EXPECT_EQ(this->rig_.running().executablePath(*before), std::nullopt);
}

TYPED_TEST_P(RunningApplicationsContract, an_application_shows_a_window_from_its_first_to_its_end) {
    EXPECT_FALSE(this->rig_.running().showsWindow({0, this->kFirst}));
    const std::int32_t process = this->rig_.start(this->kFirst);
    EXPECT_TRUE(this->rig_.running().showsWindow({0, this->kFirst}));
    EXPECT_TRUE(this->rig_.running().showsWindow({process, this->kFirst}));
    EXPECT_EQ(this->rig_.running().showsWindow({process, ""}), TypeParam::kTellsProcesses);
    EXPECT_FALSE(this->rig_.running().showsWindow({0, this->kSecond}));
    EXPECT_FALSE(this->rig_.running().showsWindow({0, ""}));
    this->rig_.end(process);
    EXPECT_FALSE(this->rig_.running().showsWindow({process, this->kFirst}));
}

TYPED_TEST_P(RunningApplicationsContract, a_new_window_is_told_while_subscribed) {
    RunningApplications& running = this->rig_.running();
    int told = 0;
    Subscription subscription = running.onWindowsChanged([&] { ++told; });
    EXPECT_FALSE(running.showsWindow({0, this->kFirst}));
    EXPECT_TRUE(this->rig_.comesTrue([] { return true; }));
    const int before = told;
    this->rig_.start(this->kFirst);
    EXPECT_TRUE(this->rig_.comesTrue([&] {
        return told > before && running.showsWindow({0, this->kFirst});
    }));
    subscription.end();
    const int atTheEnd = told;
    int toldLater = 0;
    const Subscription later = running.onWindowsChanged([&] { ++toldLater; });
    this->rig_.start(this->kSecond);
    EXPECT_TRUE(this->rig_.comesTrue([&] { return toldLater > 0; }));
    EXPECT_EQ(told, atTheEnd);
}

TYPED_TEST_P(RunningApplicationsContract, activation_brings_to_the_front) {
    const std::int32_t first = this->rig_.start(this->kFirst);
    const std::int32_t second = this->rig_.start(this->kSecond);
    const auto found = this->rig_.running().withIdentifier(this->kFirst);
    ASSERT_EQ(found.size(), 1U);
    this->rig_.turnToLauncher();
    this->rig_.running().activateAllWindows(found.front());
    EXPECT_TRUE(this->rig_.isInFront(first));
    const auto other = this->rig_.running().withProcess(second);
    ASSERT_TRUE(other);
    this->rig_.turnToLauncher();
    this->rig_.running().activateAllWindows(*other);
    EXPECT_TRUE(this->rig_.isInFront(second));
}

TYPED_TEST_P(RunningApplicationsContract, activating_what_is_gone_leaves_the_rest_as_it_is) {
    const std::int32_t first = this->rig_.start(this->kFirst);
    const std::int32_t second = this->rig_.start(this->kSecond);
    const auto found = this->rig_.running().withProcess(first);
    ASSERT_TRUE(found);
    const auto other = this->rig_.running().withProcess(second);
    ASSERT_TRUE(other);
    this->rig_.turnToLauncher();
    this->rig_.running().activateAllWindows(*other);
    this->rig_.end(first);
    this->rig_.running().activateAllWindows(*found);
    this->rig_.running().activateAllWindows({first, this->kFirst});
    EXPECT_TRUE(this->rig_.isInFront(second));
}

REGISTER_TYPED_TEST_SUITE_P(RunningApplicationsContract, what_does_not_run_is_not_found,
                            what_runs_is_found_by_its_identifier, what_runs_twice_is_found_twice,
                            what_runs_is_found_by_its_process,
                            what_was_found_by_its_identifier_tells_its_program,
                            what_has_ended_is_not_found_any_more,
                            an_application_shows_a_window_from_its_first_to_its_end,
                            a_new_window_is_told_while_subscribed, activation_brings_to_the_front,
                            activating_what_is_gone_leaves_the_rest_as_it_is);

}  // namespace tavo
