#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/windows/NullRunningApplications.h"

namespace tavo {
namespace {

TEST(NullRunningApplications, nothing_is_known_to_run_not_even_this_program) {
    const auto running = makeNullRunningApplications();
    running->noteUserRequest("org.example.App.desktop");
    EXPECT_TRUE(running->withIdentifier("org.example.App.desktop").empty());
    EXPECT_EQ(running->withProcess(::getpid()), std::nullopt);
    EXPECT_FALSE(running->showsWindow({::getpid(), "org.example.App.desktop"}));
    EXPECT_EQ(running->executablePath({::getpid(), ""}), std::nullopt);
    running->activateAllWindows({::getpid(), ""});
    EXPECT_EQ(running->withProcess(::getpid()), std::nullopt);
}

}  // namespace
}  // namespace tavo
