#include <gtest/gtest.h>

#include "support/FatalError.h"

namespace tavo {
namespace {

TEST(FatalErrorDeathTest, it_says_one_line_and_ends_with_status_one) {
    EXPECT_EXIT(fatalError("Something is missing"), testing::ExitedWithCode(1),
                "^Something is missing\n$");
}

}  // namespace
}  // namespace tavo
