#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/Text.h"
#include "tests/support/NaiveContainment.h"

namespace tavo {
namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

TEST(Containment, agrees_with_the_naive_rule_on_random_texts) {
    std::mt19937 random(20240501);
    const TextRules english("en_US");
    const TextRules turkish("tr_TR");
    int found = 0;
    int missed = 0;
    for (int round = 0; round < 12'000; ++round) {
        const std::string text = randomText(random, 8);
        const std::string needle =
            round % 3 == 0 ? randomText(random, 3) : randomPart(random, text);
        const bool turkic = round % 2 == 0;
        const bool expected = naivelyContains(text, needle, turkic);
        ASSERT_EQ((turkic ? turkish : english).contains(text, needle), expected)
            << testing::PrintToString(needle) << " in " << testing::PrintToString(text)
            << (turkic ? " in Turkish" : "");
        ++(expected ? found : missed);
    }
    // If one of the two answers were rare, the comparison would say nothing about it.
    EXPECT_GT(found, 2'000);
    EXPECT_GT(missed, 2'000);
}

TEST(Containment, ends_a_match_only_where_letters_do_not_join) {
    const TextRules rules("en_US");
    struct Row {
        const char* name;
        const char* text;
        const char* needle;
        bool expected;
    };
    for (const Row& row :
         {Row{"joiner before a letter", "a\u200Db", "a\u200D", false},
          Row{"joiner before a sign", "a\u200D+", "a\u200D", true},
          Row{"joiner at the end", "a\u200D", "a\u200D", true},
          Row{"grapheme joiner before a letter", "a\u034Fb", "a\u034F", false},
          Row{"virama before a letter", "\u0915\u094D\u0937", "\u0915\u094D", false},
          Row{"virama before a space", "\u0915\u094D \u0937", "\u0915\u094D", true},
          Row{"the whole conjunct", "\u0915\u094D\u0937", "\u0915\u094D\u0937", true},
          Row{"leading jamo before a vowel", "\u1112\u1161", "\u1112", false},
          Row{"leading jamo before a syllable", "\u1112\uD558", "\u1112", false},
          Row{"vowel jamo before a trailing one", "\u1112\u1161\u11AB", "\u1112\u1161", false},
          Row{"syllable of jamo before another", "\u1112\u1161\u1112\u1161", "\uD558", true},
          Row{"jamo before a letter", "\u1112a", "\u1112", true},
          Row{"part of a composed syllable", "\uD55C", "\u1112\u1161", false},
          Row{"a later place that ends well", "cafe\u0301 cafe", "cafe", true}}) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(rules.contains(row.text, row.needle), row.expected);
    }
}

TEST(Containment, may_begin_with_any_mark_of_a_letter) {
    const TextRules rules("en_US");
    EXPECT_TRUE(rules.contains("s\u0323\u0307x", "\u0307x"));
    EXPECT_TRUE(rules.contains("s\u0323\u0307x", "\u0307\u0323x"));
    EXPECT_TRUE(rules.contains("s\u0307\u0323x", "\u0323"));
    EXPECT_FALSE(rules.contains("s\u0323\u0307x", "\u0323x"));
    EXPECT_FALSE(rules.contains("\u1E69x", "\u0307x"));
    EXPECT_TRUE(rules.contains("\u03B1\u0345", "\u03B9"));
    EXPECT_FALSE(rules.contains("\u1FB3", "\u03B9"));
}

TEST(Containment, finds_marks_that_passed_a_letter) {
    const TextRules rules("en_US");
    // The musical stem U+1D16D is no combining mark, but normalization moves the voicing mark
    // U+3099 before it.
    EXPECT_TRUE(rules.contains("a\u3099\U0001D16D\u3099", "\u3099\u3099\U0001D16D"));
    EXPECT_TRUE(rules.contains("a\u3099\u3099\U0001D16D", "\u3099\U0001D16D\u3099"));
    EXPECT_FALSE(rules.contains("a\u3099\u3099\U0001D16D", "\U0001D16D\u3099\u3099\u3099"));
    // The vowel sign U+0CC0 is no combining mark, but its decomposition begins with one.
    EXPECT_TRUE(rules.contains("\u0C95\u0CC0", "\u0C95\u0CBF\u0CD5"));
    EXPECT_TRUE(rules.contains("\u0C95\u0CBF\u0CD5", "\u0CC0"));
    EXPECT_TRUE(rules.contains("\u0C95\u0301\u0CC0", "\u0301\u0CBF\u0CD5"));
    EXPECT_TRUE(rules.contains("\u0C95\u0301\u0CBF\u0CD5", "\u0301\u0CC0"));
}

TEST(Containment, reads_ill_formed_bytes_as_replacement_characters) {
    const TextRules rules("en_US");
    EXPECT_TRUE(
        rules.contains("a\xFF"
                       "b",
                       "\uFFFD"));
    EXPECT_TRUE(
        rules.contains("a\xF0\x9F"
                       "b",
                       "A\uFFFDB"));
    EXPECT_TRUE(rules.contains("a\xE2\x80", "\xC3"));
    EXPECT_FALSE(
        rules.contains("a\xF0\x9F"
                       "b",
                       "\uFFFD\uFFFD"));
}

TEST(Containment, treats_NUL_as_any_other_character) {
    const TextRules rules("en_US");
    EXPECT_TRUE(rules.contains(std::string_view("a\0b", 3), std::string_view("\0B", 2)));
    EXPECT_FALSE(rules.contains("ab", std::string_view("\0", 1)));
    EXPECT_TRUE(rules.contains(std::string_view("\0\u00E9", 3), std::string_view("\0", 1)));
}

// Each of these cases takes milliseconds when time grows with the length of the texts, and minutes
// or more when it grows with its square.
TEST(Containment, takes_linear_time_on_hostile_texts) {
    const TextRules rules("en_US");
    constexpr std::size_t kMany = 100'000;
    struct Row {
        const char* name;
        std::string text;
        std::string needle;
        bool expected;
    };
    const std::vector<Row> rows{
        {"one letter", repeated("a", kMany), repeated("a", kMany / 2) + "b", false},
        {"one letter, found", repeated("a", kMany) + "b", repeated("A", kMany / 2) + "B", true},
        {"letters of two folded ones", repeated("ß", kMany), repeated("s", kMany + 1), false},
        {"letters of two, found", repeated("ß", kMany) + "s", repeated("s", kMany + 1), true},
        {"marks", "a" + repeated("\u0301", kMany), "a" + repeated("\u0301", kMany / 2), false},
        {"marks, found", "a" + repeated("\u0301", kMany), repeated("\u0301", kMany / 2), true},
        {"marks out of order", "a" + repeated("\u0301\u0323", kMany),
         repeated("\u0301\u0323", kMany / 2), true},
        {"marks of which the last differs", "a" + repeated("\u0301", kMany) + "\u0308",
         repeated("\u0301", kMany / 2), false},
        {"letters with marks", repeated("a\u0301", kMany),
         "\u0301" + repeated("a\u0301", kMany / 2) + "b", false},
        {"Turkish-looking letters", repeated("I\u0307", kMany),
         repeated("i\u0307", kMany / 2) + "i", false},
        {"joiners", repeated("a\u200D", kMany), repeated("a\u200D", kMany / 2) + "b", false},
        {"ill-formed bytes", repeated("\xF0\x9F", kMany), repeated("\xE2", kMany / 2) + "a", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(rules.contains(row.text, row.needle), row.expected);
        const std::vector<std::string_view> needles{row.needle, "not there", "\u0301\u0302 nor"};
        EXPECT_EQ(ContainmentMatcher(rules, needles).matchesAny(row.text), row.expected);
        EXPECT_TRUE(rules.equalIgnoringCase(row.text, row.text));
        EXPECT_EQ(rules.compare(row.text, row.text), 0);
        EXPECT_FALSE(rules.uniqueKey(row.text).empty());
    }
}

TEST(Containment, finds_parts_of_long_plain_texts) {
    const TextRules rules("en_US");
    for (const std::size_t length : {254U, 255U, 256U, 257U, 1000U}) {
        SCOPED_TRACE(length);
        const std::string text = std::string(length - 3, 'x') + "END";
        EXPECT_TRUE(rules.contains(text, "xend"));
        EXPECT_TRUE(rules.contains(text, text));
        EXPECT_FALSE(rules.contains(text, text + "x"));
        EXPECT_FALSE(rules.contains(text, "ends"));
        EXPECT_FALSE(rules.contains(text, ""));
    }
}

}  // namespace
}  // namespace tavo
