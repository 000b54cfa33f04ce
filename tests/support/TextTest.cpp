#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include "support/Text.h"

namespace tavo {
namespace {

TEST(Trimmed, takes_every_kind_of_white_space_from_both_ends) {
    for (const char* const character :
         {"\t", "\n", "\v", "\f", "\r", " ", "\u0085", "\u00A0", "\u1680", "\u2000", "\u2003",
          "\u200A", "\u200B", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"}) {
        SCOPED_TRACE(testing::PrintToString(character));
        const std::string space = character;
        EXPECT_EQ(trimmed(space + "a" + space + "b" + space + space), "a" + space + "b");
        EXPECT_EQ(trimmed(space), "");
    }
}

TEST(Trimmed, leaves_what_only_looks_like_white_space) {
    for (const std::string& kept :
         {std::string("\uFEFF"), std::string("\u180E"), std::string("\u2060"),
          std::string("\u200C"), std::string(1, '\0'), std::string("\x08"), std::string("\x0E")}) {
        SCOPED_TRACE(testing::PrintToString(kept));
        EXPECT_EQ(trimmed(kept + "a" + kept), kept + "a" + kept);
    }
}

TEST(Trimmed, is_a_view_of_the_same_text) {
    const std::string text = "  name\n";
    EXPECT_EQ(trimmed(text).data(), text.data() + 2);
}

TEST(Trimmed, keeps_ill_formed_bytes_and_trims_around_them) {
    EXPECT_EQ(trimmed(" \xFF "), "\xFF");
    EXPECT_EQ(trimmed("\xE2\x80 a \xE2\x80"), "\xE2\x80 a \xE2\x80");
    EXPECT_EQ(trimmed("a\xE2\xE2\x80\x8B"), "a\xE2");
    EXPECT_EQ(trimmed("\x80\x8B"), "\x80\x8B");
    // An overlong encoding of a space is not a space.
    EXPECT_EQ(trimmed("\xC0\xA0"), "\xC0\xA0");
}

TEST(Lowercased, knows_no_locale_and_no_context) {
    EXPECT_EQ(lowercased("CAT:Åß Σ"), "cat:åß σ");
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδοσ");
    EXPECT_EQ(lowercased("\u0130"), "i\u0307");
    EXPECT_EQ(lowercased("I"), "i");
    EXPECT_EQ(lowercased("\U00010400"), "\U00010428");
    EXPECT_EQ(lowercased(""), "");
}

TEST(Lowercased, repairs_ill_formed_bytes) {
    EXPECT_EQ(lowercased("A\xFF"
                         "B"),
              "a\uFFFD"
              "b");
}

TEST(RepairedUtf8, leaves_well_formed_text_alone) {
    const std::string text = std::string("a\0b", 3) + "é€😀\uFEFF";
    EXPECT_EQ(repairedUtf8(text), text);
    EXPECT_TRUE(isUtf8(text));
    EXPECT_EQ(repairedUtf8(""), "");
    EXPECT_TRUE(isUtf8(""));
}

TEST(RepairedUtf8, makes_one_replacement_of_each_maximal_ill_formed_part) {
    EXPECT_EQ(repairedUtf8("\xF0\x9F\x98"), "\uFFFD");
    EXPECT_EQ(repairedUtf8("\xF0\x9F\x98x"), "\uFFFDx");
    EXPECT_EQ(repairedUtf8("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(repairedUtf8("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_FALSE(isUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(isUtf8("abc\x80"));
    EXPECT_FALSE(isUtf8("\xC3"));
}

TEST(Marks, are_the_scalars_that_extend_a_grapheme_cluster) {
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        const int property =
            u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK);
        ASSERT_EQ(isMark(scalar), property == U_GCB_EXTEND) << static_cast<std::uint32_t>(scalar);
        ASSERT_EQ(isSpacingMark(scalar), property == U_GCB_SPACING_MARK)
            << static_cast<std::uint32_t>(scalar);
    }
}

TEST(Marks, include_skin_tones_and_variation_selectors_but_not_the_joiner) {
    EXPECT_TRUE(isMark(0x0301));
    EXPECT_TRUE(isMark(0x200C));
    EXPECT_TRUE(isMark(0xFE0F));
    EXPECT_TRUE(isMark(0x1F3FD));
    EXPECT_TRUE(isMark(0x094D));
    EXPECT_FALSE(isMark(0x200D));
    EXPECT_FALSE(isMark(0x093F));
    EXPECT_TRUE(isSpacingMark(0x093F));
    EXPECT_FALSE(isSpacingMark(0x0301));
}

TEST(ProcessIdentifier, is_one_whole_decimal_number_within_32_bits) {
    EXPECT_EQ(processIdentifier("0012"), 12);
    EXPECT_EQ(processIdentifier("-0"), 0);
    EXPECT_EQ(processIdentifier("2147483647"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(processIdentifier("-2147483648"), std::numeric_limits<std::int32_t>::min());
    for (const std::string_view text : {"", "+", "-", "+-1", "-+1", "++1", "--1", "1 ", " 1", "1\n",
                                        "2147483648", "99999999999999999999", "0x1", "1.", "a"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(processIdentifier(text), std::nullopt);
    }
}

}  // namespace
}  // namespace tavo
