// What every icon source promises, as one suite over any of them.
//
// A World is one system with a few applications:
//   IconSource& source();                          the source under test
//   std::string application(int number);           the path of one whose whole icon has one opaque
//                                                  colour, another one for each of 0 … 7
//   std::string applicationWithoutIcon();          the path of one that has none
//
// INSTANTIATE_TYPED_TEST_SUITE_P(Name, IconSourceContract, World);
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/IconSource.h"

namespace tavo {

template<typename World>
class IconSourceContract : public testing::Test {
protected:
    static constexpr int kSize = 68;

    IconSource& source() { return world_.source(); }

    static std::uint32_t middleOf(const IconImage& icon) {
        return icon.pixels.at(icon.pixels.size() / 2 + static_cast<std::size_t>(icon.side) / 2);
    }

    static void expectWellFormed(const IconImage& icon, int side) {
        EXPECT_EQ(icon.side, side);
        ASSERT_EQ(icon.pixels.size(),
                  static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
        for (const std::uint32_t pixel : icon.pixels) {
            const std::uint32_t alpha = pixel >> 24U;
            ASSERT_LE(pixel >> 16U & 0xffU, alpha);
            ASSERT_LE(pixel >> 8U & 0xffU, alpha);
            ASSERT_LE(pixel & 0xffU, alpha);
        }
        EXPECT_TRUE(std::ranges::any_of(icon.pixels, [](std::uint32_t pixel) {
            return pixel >> 24U != 0;
        })) << "nothing can be seen";
    }

    World world_;
};

TYPED_TEST_SUITE_P(IconSourceContract);

TYPED_TEST_P(IconSourceContract, icons_are_squares_of_size_times_scale_pixels_rounded) {
    struct Case {
        int size;
        double scale;
        int side;
    };
    constexpr std::array<Case, 7> kCases = {{
        {68, 1, 68},
        {68, 1.25, 85},
        {68, 1.5, 102},
        {68, 2, 136},
        {68, 3, 204},
        {17, 1.25, 21},
        {33, 1.5, 50},
    }};
    for (const Case& row : kCases) {
        SCOPED_TRACE(testing::Message() << row.size << " at " << row.scale);
        this->expectWellFormed(
            this->source().icon(this->world_.application(0), row.size, row.scale), row.side);
    }
}

TYPED_TEST_P(IconSourceContract, an_application_without_an_icon_gets_the_generic_one) {
    const auto first = this->source().icon(this->world_.applicationWithoutIcon(), this->kSize, 1);
    this->expectWellFormed(first, this->kSize);
    const auto other = this->source().icon(this->world_.application(1), this->kSize, 1);
    EXPECT_NE(first, other);
}

TYPED_TEST_P(IconSourceContract, the_generic_icon_is_as_large_as_any_other) {
    this->expectWellFormed(this->source().genericIcon(this->kSize, 1.5), 102);
    EXPECT_EQ(this->source().genericIcon(0, 1).pixels.size(), 1U);
}

TYPED_TEST_P(IconSourceContract, a_source_that_rested_goes_on) {
    const std::string path = this->world_.application(4);
    const auto before = this->source().icon(path, this->kSize, 1);
    this->source().rest();
    EXPECT_EQ(this->source().icon(path, this->kSize, 1), before);
    EXPECT_EQ(this->source().icon(path, this->kSize, 2).side, 136);
}

TYPED_TEST_P(IconSourceContract, the_same_question_has_the_same_answer) {
    const std::string path = this->world_.application(2);
    EXPECT_EQ(this->source().icon(path, this->kSize, 1.5),
              this->source().icon(path, this->kSize, 1.5));
}

TYPED_TEST_P(IconSourceContract, every_application_has_its_own_icon) {
    std::set<std::uint32_t> colours;
    for (int number = 0; number < 8; ++number) {
        const auto icon = this->source().icon(this->world_.application(number), this->kSize, 1);
        colours.insert(this->middleOf(icon));
    }
    EXPECT_EQ(colours.size(), 8U);
}

TYPED_TEST_P(IconSourceContract, sizes_that_make_no_sense_still_give_a_picture) {
    const std::string path = this->world_.application(3);
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(this->source().icon(path, 0, 1).pixels.size(), 1U);
    EXPECT_EQ(this->source().icon(path, -5, 2).pixels.size(), 1U);
    EXPECT_EQ(this->source().icon(path, this->kSize, 0).pixels.size(), 1U);
    EXPECT_EQ(this->source().icon(path, this->kSize, notANumber).pixels.size(), 1U);
}

TYPED_TEST_P(IconSourceContract, several_threads_may_ask_at_once) {
    constexpr int kThreads = 4;
    std::array<std::vector<std::uint32_t>, kThreads> colours;
    {
        std::vector<std::jthread> threads;
        for (auto& seen : colours) {
            threads.emplace_back([this, &seen] {
                for (int number = 0; number < 8; ++number) {
                    const auto icon =
                        this->source().icon(this->world_.application(number), this->kSize, 1);
                    seen.push_back(this->middleOf(icon));
                }
            });
        }
    }
    for (const auto& seen : colours) {
        EXPECT_EQ(seen, colours.front());
    }
    EXPECT_EQ(std::set(colours.front().begin(), colours.front().end()).size(), 8U);
}

REGISTER_TYPED_TEST_SUITE_P(IconSourceContract,
                            icons_are_squares_of_size_times_scale_pixels_rounded,
                            an_application_without_an_icon_gets_the_generic_one,
                            the_generic_icon_is_as_large_as_any_other, a_source_that_rested_goes_on,
                            the_same_question_has_the_same_answer,
                            every_application_has_its_own_icon,
                            sizes_that_make_no_sense_still_give_a_picture,
                            several_threads_may_ask_at_once);

}  // namespace tavo
