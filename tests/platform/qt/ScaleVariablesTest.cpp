#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "platform/qt/ScaleVariables.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

// Whether the variable is left in the environment with that value.
bool isKept(const std::string& name, const std::string& value) {
    ScopedVariables variables;
    variables.set(name, value);
    removeUnusableScaleVariables();
    const char* const left = std::getenv(name.c_str());
    EXPECT_TRUE(left == nullptr || left == value);
    return left != nullptr;
}

TEST(ScaleVariables, a_scale_factor_that_can_be_used_is_kept) {
    for (const char* const value : {"1", "1.25", "1.5", "2", "0.5", "8", "2.0000"}) {
        EXPECT_TRUE(isKept("QT_SCALE_FACTOR", value)) << value;
    }
}

TEST(ScaleVariables, a_scale_factor_that_is_no_number_or_out_of_range_is_removed) {
    for (const char* const value : {"nan", "-nan", "inf", "0", "-1", "50", "1e-9", "1e300", "0.49",
                                    "8.01", "", "abc", "2x", "1,5"}) {
        EXPECT_FALSE(isKept("QT_SCALE_FACTOR", value)) << value;
    }
}

TEST(ScaleVariables, factors_of_screens_are_kept_or_removed_together) {
    for (const char* const value : {"1;1.5", "eDP-1=1;HDMI-1=1.5;", "2", "", "a=b=1.25"}) {
        EXPECT_TRUE(isKept("QT_SCREEN_SCALE_FACTORS", value)) << value;
    }
    for (const char* const value : {"1;nan", "eDP-1=0;HDMI-1=1.5", "50", "eDP-1=", "x;1"}) {
        EXPECT_FALSE(isKept("QT_SCREEN_SCALE_FACTORS", value)) << value;
    }
}

TEST(ScaleVariables, a_resolution_is_kept_or_removed_in_the_same_way) {
    for (const char* const name : {"QT_FONT_DPI", "QT_WAYLAND_FORCE_DPI"}) {
        EXPECT_TRUE(isKept(name, "120"));
        for (const char* const value : {"0", "-96", "4800", "nan"}) {
            EXPECT_FALSE(isKept(name, value)) << value;
        }
    }
}

TEST(ScaleVariables, one_that_leaves_the_range_together_with_the_scale_factor_is_removed) {
    const auto isKeptBeside = [](const char* scale, const char* name, const char* value) {
        ScopedVariables variables;
        variables.set("QT_SCALE_FACTOR", scale);
        const bool kept = isKept(name, value);
        EXPECT_STREQ(std::getenv("QT_SCALE_FACTOR"), scale);
        return kept;
    };
    EXPECT_TRUE(isKeptBeside("2", "QT_SCREEN_SCALE_FACTORS", "1;4"));
    EXPECT_TRUE(isKeptBeside("0.5", "QT_SCREEN_SCALE_FACTORS", "8"));
    EXPECT_FALSE(isKeptBeside("8", "QT_SCREEN_SCALE_FACTORS", "8"));
    EXPECT_FALSE(isKeptBeside("2", "QT_SCREEN_SCALE_FACTORS", "1;4.5"));
    EXPECT_FALSE(isKeptBeside("0.5", "QT_SCREEN_SCALE_FACTORS", "0.5"));
    EXPECT_TRUE(isKeptBeside("2", "QT_FONT_DPI", "192"));
    EXPECT_FALSE(isKeptBeside("8", "QT_FONT_DPI", "192"));
    // A factor that is removed counts for nothing.
    ScopedVariables variables;
    variables.set("QT_SCALE_FACTOR", "50");
    EXPECT_TRUE(isKept("QT_SCREEN_SCALE_FACTORS", "8"));
}

}  // namespace
}  // namespace tavo
