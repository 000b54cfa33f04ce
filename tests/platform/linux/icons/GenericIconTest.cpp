#include <gtest/gtest.h>

#include "platform/linux/icons/GenericIcon.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

TEST(GenericIcon, is_a_rounded_square_of_any_size) {
    for (const int side : {1, 2, 16, 68, 85, 102, 136, 204}) {
        const IconImage icon = drawGenericIcon(side);
        EXPECT_EQ(icon.side, side);
        EXPECT_EQ(icon.pixels.size(), static_cast<std::size_t>(side * side));
        EXPECT_NE(middleOf(icon) >> 24U, 0U);
        if (side > 2) {
            EXPECT_EQ(pixelAt(icon, 0, 0), 0U);
        }
    }
}

}  // namespace
}  // namespace tavo
