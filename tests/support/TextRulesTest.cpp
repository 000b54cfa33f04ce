#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "support/Text.h"
#include "support/TextFolding.h"
#include "support/Utf8.h"
#include "tests/support/NaiveContainment.h"

namespace tavo {
namespace {

// Sets or unsets an environment variable; the destructor restores the former value.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* const previous = std::getenv(name)) {
            previous_ = previous;
        }
        set(value);
    }
    ~ScopedVariable() { set(previous_ ? previous_->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value) {
        if (value != nullptr) {
            setenv(name_, value, 1);
        } else {
            unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> previous_;
};

bool isTurkish(const TextRules& rules) {
    return !rules.contains("I", "i");
}

int sign(int number) {
    return (number > 0) - (number < 0);
}

std::string decomposed(char32_t scalar) {
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    icu::Normalizer2::getNFDInstance(status)
        ->normalize(icu::UnicodeString(static_cast<UChar32>(scalar)), status)
        .toUTF8String(text);
    return text;
}

std::string hexadecimal(char32_t scalar) {
    std::ostringstream text;
    text << "U+" << std::hex << static_cast<std::uint32_t>(scalar);
    return text.str();
}

bool isSurrogate(char32_t scalar) {
    return scalar >= 0xD800 && scalar <= 0xDFFF;
}

TEST(TextRules, know_turkish_by_any_spelling_of_its_locale) {
    for (const char* locale : {"tr", "tr_TR", "tr_TR.UTF-8", "tr_TR.ISO-8859-9@euro", "tr-TR",
                               "TR_tr", "az", "az_AZ.UTF-8", "az_Latn_AZ", "tr_CY@latin"}) {
        SCOPED_TRACE(locale);
        const TextRules rules(locale);
        EXPECT_TRUE(isTurkish(rules));
        EXPECT_TRUE(rules.contains("Inkscape", "ı"));
        EXPECT_TRUE(rules.contains("İnkscape", "ink"));
        EXPECT_LT(rules.compare("I", "i"), 0);
    }
}

TEST(TextRules, accept_every_locale_name) {
    const std::string endless(100'000, 'x');
    for (const std::string_view locale :
         {std::string_view("it_IT.UTF-8"), std::string_view("de_DE@euro"),
          std::string_view("C.UTF-8"), std::string_view("C"), std::string_view("POSIX"),
          std::string_view(""), std::string_view("sr_RS.UTF-8@latin"), std::string_view(".UTF-8"),
          std::string_view("@euro"), std::string_view("@latin"), std::string_view("xx_YY"),
          std::string_view("../../etc/passwd"), std::string_view("%n%s\x01\xFF"),
          std::string_view("it\0IT", 5), std::string_view("de_DE@colstrength=primary"),
          std::string_view("en@collation=nonsense"), std::string_view("____@@@==;;"),
          std::string_view(endless)}) {
        SCOPED_TRACE(locale.substr(0, 40));
        const TextRules rules(locale);
        EXPECT_FALSE(isTurkish(rules));
        EXPECT_TRUE(rules.contains("Visual Studio", "STUDIO"));
        EXPECT_LT(rules.compare("App 2", "App 10"), 0);
        EXPECT_LT(rules.compare("a", "A"), 0);
        EXPECT_LT(rules.compare("a b", "ab"), 0);
        EXPECT_LT(rules.compare("e", "é"), 0);
        EXPECT_EQ(rules.uniqueKey("Città"), "citta");
    }
}

TEST(TextRules, follow_the_alphabet_of_the_language) {
    EXPECT_GT(TextRules("sv_SE.UTF-8").compare("ö", "z"), 0);
    EXPECT_LT(TextRules("de_DE.UTF-8@euro").compare("ö", "z"), 0);
    EXPECT_LT(TextRules("C").compare("ö", "z"), 0);
    EXPECT_LT(TextRules("sr_RS@latin").compare("cz", "č"), 0);
    EXPECT_GT(TextRules("en_US").compare("cz", "č"), 0);
}

TEST(TextRules, of_the_user_read_LC_ALL_then_LC_COLLATE_then_LANG) {
    struct Row {
        const char* name;
        const char* all;
        const char* collate;
        const char* lang;
        bool turkish;
    };
    for (const Row& row : {Row{"LC_ALL wins", "tr_TR.UTF-8", "it_IT", "it_IT", true},
                           Row{"LC_ALL wins over Turkish", "C", "tr_TR", "tr_TR", false},
                           Row{"LC_COLLATE next", nullptr, "tr_TR", "it_IT", true},
                           Row{"an empty LC_ALL counts as unset", "", "tr_TR", "it_IT", true},
                           Row{"LANG last", nullptr, nullptr, "tr_TR", true},
                           Row{"all empty but LANG", "", "", "tr_TR", true},
                           Row{"nothing at all", nullptr, nullptr, nullptr, false},
                           Row{"nothing but empty ones", "", "", "", false}}) {
        SCOPED_TRACE(row.name);
        const ScopedVariable all("LC_ALL", row.all);
        const ScopedVariable collate("LC_COLLATE", row.collate);
        const ScopedVariable lang("LANG", row.lang);
        EXPECT_EQ(isTurkish(TextRules::forUser()), row.turkish);
    }
}

TEST(TextRules, are_shared_by_their_copies) {
    std::optional<TextRules> original("tr");
    const TextRules copy = *original;
    original.reset();
    EXPECT_TRUE(isTurkish(copy));
    EXPECT_LT(copy.compare("ı", "i"), 0);
}

TEST(EqualIgnoringCase, holds_for_every_scalar_and_its_decomposition) {
    for (const char* locale : {"en_US", "tr_TR"}) {
        const TextRules rules(locale);
        for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
            if (isSurrogate(scalar)) {
                continue;
            }
            std::string composed;
            appendScalar(composed, scalar);
            ASSERT_TRUE(rules.equalIgnoringCase(composed, decomposed(scalar)))
                << locale << " " << hexadecimal(scalar);
        }
    }
}

TEST(EqualIgnoringCase, is_equality_of_the_whole_folded_text) {
    const TextRules rules("en_US");
    EXPECT_TRUE(rules.equalIgnoringCase("", ""));
    EXPECT_TRUE(rules.equalIgnoringCase("WORK", "work"));
    EXPECT_TRUE(rules.equalIgnoringCase("STRASSE", "straße"));
    EXPECT_TRUE(rules.equalIgnoringCase("Caf\u00E9", "CAFE\u0301"));
    EXPECT_FALSE(rules.equalIgnoringCase("work", "works"));
    EXPECT_FALSE(rules.equalIgnoringCase("cafe", "café"));
    EXPECT_FALSE(rules.equalIgnoringCase("", "a"));
    EXPECT_FALSE(rules.equalIgnoringCase("ISTANBUL", "\u0131stanbul"));
    EXPECT_TRUE(TextRules("tr").equalIgnoringCase("ISTANBUL", "\u0131stanbul"));
    EXPECT_FALSE(TextRules("tr").equalIgnoringCase("ISTANBUL", "istanbul"));
    EXPECT_FALSE(rules.equalIgnoringCase("\u1C80", "\u0432"));
}

int combiningClass(char32_t scalar) {
    return u_getCombiningClass(static_cast<UChar32>(scalar));
}

// For this reason the search for a match that begins with a mark may go by whole runs of marks.
TEST(Folding, makes_marks_of_marks_and_nothing_that_begins_with_a_movable_mark_of_the_rest) {
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        if (isSurrogate(scalar)) {
            continue;
        }
        std::string source;
        appendScalar(source, scalar);
        const std::string units = folded(source, Casing::kGeneral).units;
        std::size_t offset = 0;
        const char32_t first = nextScalar(units, offset);
        if (!isMark(scalar)) {
            ASSERT_FALSE(isMark(first) && combiningClass(first) != 0) << hexadecimal(scalar);
        } else if (scalar == 0x0345) {
            ASSERT_EQ(units, "\u03B9") << hexadecimal(scalar);
        } else {
            ASSERT_EQ(units, decomposed(scalar)) << hexadecimal(scalar);
            const bool movable = combiningClass(first) != 0;
            ASSERT_TRUE(isMark(first)) << hexadecimal(scalar);
            while (offset < units.size()) {
                const char32_t part = nextScalar(units, offset);
                ASSERT_TRUE(isMark(part)) << hexadecimal(scalar);
                ASSERT_TRUE(!movable || combiningClass(part) != 0) << hexadecimal(scalar);
            }
        }
    }
}

TEST(UniqueKey, drops_the_first_accent_after_a_letter_of_another_script) {
    const TextRules rules("en_US");
    EXPECT_EQ(rules.uniqueKey("\uFF21\u0301"), "\uFF41");
    EXPECT_EQ(rules.uniqueKey("\u304B\u3099\u0301"), "\u304B\u3099\u0301");
    EXPECT_EQ(rules.uniqueKey("\u0301\u0302a"), "\u0301a");
    EXPECT_EQ(rules.uniqueKey("\uFFFD"), "\uFFFD");
    EXPECT_EQ(rules.uniqueKey("\xFF"), "\uFFFD");
}

TEST(UniqueKey, is_the_same_for_capital_and_small_letters) {
    const TextRules rules("it_IT");
    EXPECT_EQ(rules.uniqueKey("CREATIVITÀ"), rules.uniqueKey("creativita\u0300"));
    EXPECT_EQ(rules.uniqueKey("ΟΔΟΣ"), rules.uniqueKey("οδος"));
    EXPECT_NE(rules.uniqueKey("Øl"), rules.uniqueKey("Ol"));
}

class SortedOrder : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Locales, SortedOrder,
                         testing::Values("en_US", "it_IT.UTF-8", "sv_SE", "fr_CA", "ja_JP", "tr_TR",
                                         "C"),
                         [](const auto& locale) {
                             std::string name = locale.param;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char letter) { return letter == '.' || letter == '-'; }, '_');
                             return name;
                         });

std::vector<std::string> randomNames(std::mt19937& random, std::size_t count) {
    std::vector<std::string> names;
    while (names.size() < count) {
        std::string name = randomText(random, 5);
        if (random() % 3 == 0) {
            name += " " + std::to_string(random() % 20);
        } else if (random() % 3 == 0) {
            name = std::string(random() % 3, '0') + std::to_string(random() % 20) + name;
        }
        names.push_back(random() % 10 == 0 && !names.empty() ? names[random() % names.size()]
                                                             : name);
    }
    return names;
}

TEST_P(SortedOrder, is_the_stable_order_of_compare) {
    std::mt19937 random(7);
    const TextRules rules(GetParam());
    std::vector<std::string> names = randomNames(random, 1500);
    // Names that are longer than a usual ICU sort key, and differ at their very end.
    std::string longName;
    while (longName.size() < 2'000) {
        longName += "long ";
    }
    for (const char* end : {"b", "a", "B", "á", "10", "9"}) {
        names.push_back(longName + end);
    }
    // Names that the language takes for equal, though their characters differ.
    names.insert(names.end(), {"e\u0301", "é", "a\u00ADb", "ab", "02", "2", "ß", "ss", "\U0001F600",
                               "\uFB01", "fi", "\U0001F600", "\xFF", "\uFFFD", ""});
    const std::vector<std::string_view> views(names.begin(), names.end());
    std::vector<std::size_t> expected(names.size());
    std::iota(expected.begin(), expected.end(), 0);
    std::stable_sort(expected.begin(), expected.end(), [&](std::size_t a, std::size_t b) {
        return rules.compare(views[a], views[b]) < 0;
    });
    EXPECT_EQ(rules.sortedOrder(views), expected);
}

TEST_P(SortedOrder, comes_from_a_total_order) {
    std::mt19937 random(11);
    const TextRules rules(GetParam());
    const std::vector<std::string> names = randomNames(random, 60);
    for (const auto& a : names) {
        for (const auto& b : names) {
            const int order = sign(rules.compare(a, b));
            ASSERT_EQ(order, -sign(rules.compare(b, a))) << a << " | " << b;
            ASSERT_EQ(order == 0, a == b) << a << " | " << b;
        }
    }
}

TEST(Comparison, puts_names_that_the_language_finds_equal_in_the_order_of_their_utf_16_units) {
    const TextRules rules("en_US");
    // The language ignores all of these characters. The tag U+E0001 has two UTF-16 units, of which
    // the first is a surrogate: that is below U+FEFF, though the code point is above.
    EXPECT_LT(rules.compare("\uFEFF", "\U000E0001"), 0);
    EXPECT_LT(rules.compare("\U000E0001", "\uFEFF\uFEFF"), 0);
    EXPECT_LT(rules.compare("\u00AD", "\uFEFF"), 0);
    const std::vector<std::string_view> names{"\uFEFF\uFEFF", "\U000E0001", "\uFEFF", "\u00AD", ""};
    EXPECT_EQ(rules.sortedOrder(names), (std::vector<std::size_t>{4, 3, 2, 1, 0}));
}

TEST(Comparison, measures_both_spellings_of_a_letter_alike) {
    const TextRules rules("en_US");
    EXPECT_LT(rules.compare("e\u0301", "\u00E9"), 0);
    EXPECT_LT(rules.compare("\u00E9", "e\u0301\u00AD"), 0);
    EXPECT_LT(rules.compare("e\u0301", "\u00E9\u00AD"), 0);
    EXPECT_LT(rules.compare("e\u0301 2", "\u00E9 02"), 0);
    EXPECT_LT(rules.compare("\u00E9 2", "e\u0301 02"), 0);
    EXPECT_LT(rules.compare("App 2", "App 02"), 0);
}

TEST(Comparison, finds_only_equal_texts_equal) {
    const TextRules rules("en_US");
    EXPECT_EQ(rules.compare("", ""), 0);
    EXPECT_LT(rules.compare("", "a"), 0);
    // An ill-formed byte is read as U+FFFD, and so equals it.
    EXPECT_EQ(rules.compare("\xFF", "\uFFFD"), 0);
}

TEST(SortedOrder, of_nothing_is_nothing) {
    EXPECT_TRUE(TextRules("en_US").sortedOrder({}).empty());
}

TEST(TextRules, may_be_used_from_several_threads_at_once) {
    const TextRules rules("it_IT");
    const std::vector<std::string_view> needles{"città", "ss", "\u0301"};
    std::mt19937 random(3);
    const std::vector<std::string> names = randomNames(random, 200);
    const std::vector<std::string_view> views(names.begin(), names.end());
    std::vector<std::vector<std::size_t>> orders(4);
    std::vector<std::size_t> found(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < orders.size(); ++i) {
        threads.emplace_back([&, i] {
            const ContainmentMatcher matcher(rules, needles);
            orders[i] = rules.sortedOrder(views);
            for (const std::string_view name : views) {
                found[i] += matcher.matchesAny(name) ? 1 : 0;
                found[i] += rules.uniqueKey(name).size();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 1; i < orders.size(); ++i) {
        EXPECT_EQ(orders[i], orders[0]);
        EXPECT_EQ(found[i], found[0]);
    }
    EXPECT_EQ(orders[0].size(), names.size());
}

}  // namespace
}  // namespace tavo
