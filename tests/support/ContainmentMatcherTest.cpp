#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/Text.h"
#include "tests/support/NaiveContainment.h"

namespace tavo {
namespace {

std::vector<std::string_view> views(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

bool containsAny(const TextRules& rules, std::string_view text,
                 const std::vector<std::string>& needles) {
    return std::any_of(needles.begin(), needles.end(),
                       [&](const auto& needle) { return rules.contains(text, needle); });
}

TEST(ContainmentMatcher, without_needles_matches_nothing) {
    const TextRules rules("en_US");
    const ContainmentMatcher matcher(rules, {});
    EXPECT_FALSE(matcher.matchesAny(""));
    EXPECT_FALSE(matcher.matchesAny("Safari"));
    EXPECT_FALSE(matcher.matchesAny("Città"));
}

TEST(ContainmentMatcher, ignores_empty_needles) {
    const TextRules rules("en_US");
    const std::vector<std::string> needles{"", "mail", ""};
    const ContainmentMatcher matcher(rules, views(needles));
    EXPECT_FALSE(matcher.matchesAny(""));
    EXPECT_FALSE(matcher.matchesAny("Safari"));
    EXPECT_TRUE(matcher.matchesAny("Thunderbird Mail"));
}

TEST(ContainmentMatcher, does_not_need_its_needles_after_it_is_made) {
    const TextRules rules("en_US");
    std::vector<std::string> needles{"mail", "citta\u0300", "\u0301"};
    const ContainmentMatcher matcher(rules, views(needles));
    for (std::string& needle : needles) {
        std::fill(needle.begin(), needle.end(), 'x');
    }
    needles.clear();
    EXPECT_TRUE(matcher.matchesAny("Mail"));
    EXPECT_TRUE(matcher.matchesAny("CITTÀ"));
    EXPECT_TRUE(matcher.matchesAny("cafe\u0301"));
    EXPECT_FALSE(matcher.matchesAny("xxxx"));
}

TEST(ContainmentMatcher, keeps_its_needles_when_it_is_moved) {
    const TextRules rules("en_US");
    const std::vector<std::string> needles{"mail"};
    ContainmentMatcher first(rules, views(needles));
    const ContainmentMatcher second(std::move(first));
    EXPECT_TRUE(second.matchesAny("Mail"));
    ContainmentMatcher third(rules, {});
    third = ContainmentMatcher(rules, views(needles));
    EXPECT_TRUE(third.matchesAny("Mail"));
}

TEST(ContainmentMatcher, finds_a_needle_inside_one_that_nearly_matched) {
    const TextRules rules("en_US");
    const std::vector<std::string> needles{"abcdx", "bcdy", "cd"};
    EXPECT_TRUE(ContainmentMatcher(rules, views(needles)).matchesAny("abcd"));
    const std::vector<std::string> others{"abcdx", "bcdy", "dz"};
    EXPECT_FALSE(ContainmentMatcher(rules, views(others)).matchesAny("abcd"));
    EXPECT_TRUE(ContainmentMatcher(rules, views(others)).matchesAny("abcdz"));
}

TEST(ContainmentMatcher, does_not_stop_at_a_match_that_a_mark_undoes) {
    const TextRules rules("en_US");
    const std::vector<std::string> needles{"cafe"};
    const ContainmentMatcher matcher(rules, views(needles));
    EXPECT_FALSE(matcher.matchesAny("Cafe\u0301"));
    EXPECT_TRUE(matcher.matchesAny("Cafe\u0301 cafe"));
    EXPECT_TRUE(matcher.matchesAny("Cafe Ü"));
    EXPECT_TRUE(matcher.matchesAny("Cafeé"));
}

TEST(ContainmentMatcher, finds_a_shorter_needle_where_a_longer_one_does_not_fit) {
    const TextRules rules("en_US");
    // 'ß' folds to "ss". At the end of "aßs", a match of "ss" would begin in the middle of 'ß', but
    // one of "s" begins at the letter s.
    const std::vector<std::string> needles{"ss", "s"};
    EXPECT_TRUE(ContainmentMatcher(rules, views(needles)).matchesAny("aßs"));
    const std::vector<std::string> longOnly{"ss"};
    EXPECT_TRUE(ContainmentMatcher(rules, views(longOnly)).matchesAny("aßs"));
    const std::vector<std::string> shortOnly{"s"};
    EXPECT_FALSE(ContainmentMatcher(rules, views(shortOnly)).matchesAny("aß"));
}

TEST(ContainmentMatcher, pairs_the_letters_i_as_the_language_does) {
    const std::vector<std::string> dotted{"fi"};
    const std::vector<std::string> dotless{"f\u0131"};
    const TextRules turkish("tr_TR");
    EXPECT_FALSE(ContainmentMatcher(turkish, views(dotted)).matchesAny("FIREFOX"));
    EXPECT_TRUE(ContainmentMatcher(turkish, views(dotted)).matchesAny("Firefox"));
    EXPECT_TRUE(ContainmentMatcher(turkish, views(dotless)).matchesAny("FIREFOX"));
    EXPECT_TRUE(ContainmentMatcher(TextRules("en_US"), views(dotted)).matchesAny("FIREFOX"));
}

TEST(ContainmentMatcher, agrees_with_asking_for_each_needle_on_random_texts) {
    std::mt19937 random(987);
    const TextRules english("en_US");
    const TextRules turkish("tr_TR");
    int found = 0;
    int missed = 0;
    for (int round = 0; round < 4'000; ++round) {
        const TextRules& rules = round % 2 == 0 ? english : turkish;
        const std::string seedText = randomText(random, 10);
        std::vector<std::string> needles;
        for (std::size_t count = 1 + random() % 8; needles.size() < count;) {
            needles.push_back(random() % 3 == 0 ? randomText(random, 4)
                                                : randomPart(random, seedText) +
                                                      (random() % 2 == 0 ? "" : "e\u0301"));
        }
        const ContainmentMatcher matcher(rules, views(needles));
        for (int texts = 0; texts < 6; ++texts) {
            const std::string text = texts == 0 ? seedText
                                     : texts % 2 == 0
                                         ? randomText(random, 12)
                                         : randomPart(random, seedText) + randomText(random, 2);
            const bool expected = containsAny(rules, text, needles);
            ASSERT_EQ(matcher.matchesAny(text), expected)
                << testing::PrintToString(needles) << " in " << testing::PrintToString(text)
                << (round % 2 == 0 ? "" : " in Turkish");
            ++(expected ? found : missed);
        }
    }
    EXPECT_GT(found, 4'000);
    EXPECT_GT(missed, 4'000);
}

TEST(ContainmentMatcher, agrees_with_asking_for_each_of_many_plain_needles) {
    std::mt19937 random(31);
    const auto word = [&](std::size_t length, unsigned letters) {
        std::string text;
        while (text.size() < length) {
            text += static_cast<char>((random() % 4 == 0 ? 'A' : 'a') + random() % letters);
        }
        return text;
    };
    const TextRules rules("en_US");
    for (const unsigned letters : {2U, 5U, 26U}) {
        SCOPED_TRACE(letters);
        std::vector<std::string> needles;
        while (needles.size() < 300) {
            needles.push_back(word((letters == 2   ? 9
                                    : letters == 5 ? 4
                                                   : 2) +
                                       random() % 5,
                                   letters));
        }
        const ContainmentMatcher matcher(rules, views(needles));
        int found = 0;
        for (int texts = 0; texts < 400; ++texts) {
            const std::string text = word(random() % 30, letters);
            const bool expected = containsAny(rules, text, needles);
            ASSERT_EQ(matcher.matchesAny(text), expected) << text;
            found += expected ? 1 : 0;
        }
        EXPECT_GT(found, 40);
        EXPECT_LT(found, 400);
    }
}

TEST(ContainmentMatcher, takes_linear_time_on_needles_that_nearly_match_everywhere) {
    const TextRules rules("en_US");
    std::vector<std::string> needles;
    for (std::size_t length = 1; length <= 400; ++length) {
        needles.push_back(std::string(length, 'a') + "b");
        needles.push_back(std::string(length, 'a') + "e\u0301");
    }
    const ContainmentMatcher matcher(rules, views(needles));
    std::string text(100'000, 'a');
    EXPECT_FALSE(matcher.matchesAny(text));
    EXPECT_FALSE(matcher.matchesAny(text + "\u00FC"));
    EXPECT_FALSE(matcher.matchesAny(text + "b\u0301"));
    EXPECT_TRUE(matcher.matchesAny(text + "\u00E9"));
    EXPECT_TRUE(matcher.matchesAny(text + "B"));
}

TEST(ContainmentMatcher, may_be_asked_from_several_threads_at_once) {
    const TextRules rules("en_US");
    const std::vector<std::string> needles{"mail", "città", "\u0301"};
    const ContainmentMatcher matcher(rules, views(needles));
    std::vector<int> found(4, 0);
    std::vector<std::thread> threads;
    for (int& count : found) {
        threads.emplace_back([&matcher, &count] {
            for (int i = 0; i < 500; ++i) {
                count += matcher.matchesAny("Thunderbird Mail") ? 1 : 0;
                count += matcher.matchesAny("La Citta\u0300") ? 1 : 0;
                count += matcher.matchesAny("Cafè") ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(found, std::vector<int>(4, 1000));
}

}  // namespace
}  // namespace tavo
