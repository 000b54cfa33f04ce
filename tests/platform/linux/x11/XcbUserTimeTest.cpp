// The time of the user's input to a Qt program.
#include <sstream>

#include <gtest/gtest.h>

#include "tests/platform/linux/fixtures/XDesktop.h"

namespace tavo {
namespace {

class XcbUserTime : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(::access("/usr/bin/xdotool", X_OK), 0) << "not installed: xdotool";
        teller_.emplace(desktop_.onDesktop(
            {"QT_QPA_PLATFORM=xcb", std::string(TAVO_TEST_PROGRAMS) + "/tavo_input_teller"}));
        EXPECT_EQ(told("ready"), "none");
    }

    void user(const std::vector<std::string>& words) {
        std::vector<std::string> command = {"/usr/bin/xdotool"};
        command.insert(command.end(), words.begin(), words.end());
        EXPECT_EQ(ChildProgram(desktop_.onDesktop(command)).wait(), 0);
    }

    // Waits for the next event of that kind and returns the time that was printed with it.
    std::string told(const std::string& kind) {
        for (auto line = teller_->readLine(); line; line = teller_->readLine()) {
            if (line->starts_with(kind + ' ')) {
                return line->substr(kind.size() + 1);
            }
        }
        return "(it ended)";
    }

    // Checks that `time` is between the two others, all by the X server's clock.
    static void expectBetween(xcb_timestamp_t begin, const std::string& time, xcb_timestamp_t end) {
        ASSERT_NE(time, "none");
        EXPECT_GE(std::stoul(time), begin);
        EXPECT_LE(std::stoul(time), end);
    }

    XDesktop desktop_{Manager::openbox};
    std::optional<ChildProgram> teller_;
};

TEST_F(XcbUserTime, is_the_servers_time_of_the_latest_key_and_button) {
    for (const auto& [kind, words] :
         {std::pair("key", std::vector<std::string>{"key", "a"}),
          std::pair("button", std::vector<std::string>{"mousemove", "200", "200", "click", "1"}),
          std::pair("key", std::vector<std::string>{"key", "b"})}) {
        SCOPED_TRACE(kind);
        const xcb_timestamp_t begin = desktop_.time();
        user(words);
        const std::string time = told(kind);
        expectBetween(begin, time, desktop_.time());
    }
}

TEST_F(XcbUserTime, is_not_moved_by_a_pointer_that_passes) {
    user({"mousemove", "150", "150"});
    EXPECT_EQ(told("move"), "none");
    const xcb_timestamp_t begin = desktop_.time();
    user({"key", "a"});
    (void)told("key");
    const xcb_timestamp_t end = desktop_.time();
    user({"mousemove", "160", "170"});
    expectBetween(begin, told("move"), end);
}

}  // namespace
}  // namespace tavo
