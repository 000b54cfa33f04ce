#include <gtest/gtest.h>

#include "tests/fakes/FakeRunningApplications.h"

namespace tavo {
namespace {

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

TEST(FakeRunningApplications, activations_are_recorded_also_of_what_is_gone) {
    FakeRunningApplications fake;
    fake.activateAllWindows({5, "gone"});
    EXPECT_EQ(fake.activated(), (std::vector<RunningApplication>{{5, "gone"}}));
}

}  // namespace
}  // namespace tavo
