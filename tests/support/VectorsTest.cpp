// Every recorded case of the rules in support/Text.h, each in its own locale.
#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/Text.h"
#include "tests/support/Vectors.h"

namespace tavo {
namespace {

TextRules rulesOf(const nlohmann::json& vectorCase) {
    return TextRules(vectorCase.at("locale").get<std::string>());
}

std::string text(const nlohmann::json& vectorCase, const char* member) {
    return vectorCase.at(member).get<std::string>();
}

int sign(int number) {
    return (number > 0) - (number < 0);
}

// The bytes that are written as hexadecimal numbers, such as "c3 28".
std::string bytesOf(const std::string& hexadecimal) {
    std::istringstream numbers(hexadecimal);
    std::string bytes;
    for (unsigned number = 0; numbers >> std::hex >> number;) {
        bytes += static_cast<char>(number);
    }
    return bytes;
}

TEST(TextVectors, containment_answers_every_case) {
    for (const auto& vectorCase : vectorCases("contains")) {
        SCOPED_TRACE(described(vectorCase));
        const TextRules rules = rulesOf(vectorCase);
        const std::string haystack = text(vectorCase, "haystack");
        const std::string needle = text(vectorCase, "needle");
        const bool expected = vectorCase.at("expected").get<bool>();
        EXPECT_EQ(rules.contains(haystack, needle), expected);
        const std::vector<std::string_view> needles{needle};
        EXPECT_EQ(ContainmentMatcher(rules, needles).matchesAny(haystack), expected);
    }
}

TEST(TextVectors, comparison_answers_every_case) {
    for (const auto& vectorCase : vectorCases("compare")) {
        SCOPED_TRACE(described(vectorCase));
        const TextRules rules = rulesOf(vectorCase);
        const std::string a = text(vectorCase, "a");
        const std::string b = text(vectorCase, "b");
        const int expected = vectorCase.at("expected").get<int>();
        EXPECT_EQ(sign(rules.compare(a, b)), expected);
        EXPECT_EQ(sign(rules.compare(b, a)), -expected);
        const std::vector<std::string_view> names{a, b};
        const auto firstThenSecond = std::vector<std::size_t>{0, 1};
        const auto secondThenFirst = std::vector<std::size_t>{1, 0};
        EXPECT_EQ(rules.sortedOrder(names), expected <= 0 ? firstThenSecond : secondThenFirst);
    }
}

TEST(TextVectors, unique_keys_answer_every_case) {
    for (const auto& vectorCase : vectorCases("fold")) {
        SCOPED_TRACE(described(vectorCase));
        EXPECT_EQ(rulesOf(vectorCase).uniqueKey(text(vectorCase, "input")),
                  text(vectorCase, "expected"));
    }
}

TEST(TextVectors, trimming_answers_every_case) {
    for (const auto& vectorCase : vectorCases("trim")) {
        SCOPED_TRACE(described(vectorCase));
        EXPECT_EQ(trimmed(text(vectorCase, "input")), text(vectorCase, "expected"));
    }
}

TEST(TextVectors, lower_case_answers_every_case) {
    for (const auto& vectorCase : vectorCases("lowercase")) {
        SCOPED_TRACE(described(vectorCase));
        EXPECT_EQ(lowercased(text(vectorCase, "input")), text(vectorCase, "expected"));
    }
}

TEST(TextVectors, process_identifiers_answer_every_case) {
    for (const auto& vectorCase : vectorCases("process-id")) {
        SCOPED_TRACE(described(vectorCase));
        const auto& expected = vectorCase.at("expected");
        EXPECT_EQ(processIdentifier(text(vectorCase, "input")),
                  expected.is_null() ? std::nullopt : std::optional(expected.get<std::int32_t>()));
    }
}

TEST(TextVectors, repairing_answers_every_case) {
    for (const auto& vectorCase : vectorCases("utf8-repair")) {
        SCOPED_TRACE(described(vectorCase));
        const std::string bytes = bytesOf(text(vectorCase, "bytes"));
        const std::string expected = text(vectorCase, "expected");
        EXPECT_EQ(repairedUtf8(bytes), expected);
        EXPECT_EQ(isUtf8(bytes), bytes == expected);
        EXPECT_TRUE(isUtf8(expected));
    }
}

}  // namespace
}  // namespace tavo
