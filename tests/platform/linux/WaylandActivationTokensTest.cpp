#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "tests/platform/linux/ChildProgram.h"
#include "tests/platform/linux/WaylandDesktop.h"

namespace tavo {
namespace {

TEST(WaylandActivationTokens, each_request_is_given_a_token_of_its_own) {
    const WaylandDesktop desktop;
    ChildProgram asker(desktop.onDesktop({TAVO_TEST_PROGRAMS "/tavo_token_asker"}));
    std::set<std::string> tokens;
    for (int round = 0; round < 3; ++round) {
        const std::string line = asker.readLine().value_or("(ended)");
        EXPECT_TRUE(line.starts_with("token ")) << line;
        tokens.insert(line);
    }
    EXPECT_EQ(tokens.size(), 3U);
}

}  // namespace
}  // namespace tavo
