#include <gtest/gtest.h>

#include "launching/ProcessPattern.h"
#include "tests/support/Vectors.h"

namespace tavo {
namespace {

TEST(ProcessPattern, every_known_case_is_escaped_and_bracketed_as_expected) {
    for (const auto& row : vectorCases("process-pattern")) {
        SCOPED_TRACE(described(row));
        const std::string input = row.at("input").get<std::string>();
        EXPECT_EQ(escapedPattern(input), row.at("escaped").get<std::string>());
        EXPECT_EQ(processPattern(input), row.at("bracketed").get<std::string>());
    }
}

TEST(ProcessPattern, a_script_is_asked_for_by_its_literal_name) {
    EXPECT_EQ(processPattern("Velumo.py"), "[V]elumo\\.py");
    EXPECT_EQ(processPattern("A.B.py"), "[A]\\.B\\.py");
    EXPECT_EQ(processPattern("(X).py"), "[\\](X\\)\\.py");
    EXPECT_EQ(processPattern(""), "");
}

struct CharacterRow {
    const char* name;
    const char* text;
    const char* pattern;
};

TEST(ProcessPattern, the_character_in_brackets_is_one_as_the_reader_sees_it) {
    for (const CharacterRow& row :
         {CharacterRow{"a letter and its mark", "e\u0301x", "[e\u0301]x"},
          {"a composed letter", "\u00e9x", "[\u00e9]x"},
          {"a letter and two marks", "e\u0301\u0323x", "[e\u0301\u0323]x"},
          {"a flag", "\U0001F1EE\U0001F1F9x", "[\U0001F1EE\U0001F1F9]x"},
          {"two flags", "\U0001F1EE\U0001F1F9\U0001F1EE\U0001F1F9",
           "[\U0001F1EE\U0001F1F9]\U0001F1EE\U0001F1F9"},
          {"a family", "\U0001F468\u200D\U0001F469\u200D\U0001F467x",
           "[\U0001F468\u200D\U0001F469\u200D\U0001F467]x"},
          {"a tone of skin", "\U0001F44D\U0001F3FDx", "[\U0001F44D\U0001F3FD]x"},
          {"a presentation", "\u2764\uFE0Fx", "[\u2764\uFE0F]x"},
          {"a key cap", "1\uFE0F\u20E3x", "[1\uFE0F\u20E3]x"},
          {"a syllable of parts", "\u1100\u1161\u11A8x", "[\u1100\u1161\u11A8]x"},
          {"a vowel sign", "\u0915\u093Fx", "[\u0915\u093F]x"},
          {"the end of a line", "\r\nx", "[\r\n]x"},
          {"a lone carriage return", "\rx", "[\r]x"},
          {"a joiner with nothing to join", "a\u200Dx", "[a\u200D]x"},
          {"a mark without a letter", "\u0301x", "[\u0301]x"},
          {"an escape and a mark", ".\u0301x", "[\\].\u0301x"},
          {"the only one", "\U0001F1EE\U0001F1F9", "[\U0001F1EE\U0001F1F9]"},
          {"bytes that are no text", "\xff\xfex", "[\xff]\xfex"}}) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(processPattern(row.text), row.pattern);
    }
}

}  // namespace
}  // namespace tavo
