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

TEST(ProcessPattern, a_letter_and_its_marks_are_one_character) {
    EXPECT_EQ(processPattern("e\u0301x"), "[e\u0301]x");
    EXPECT_EQ(processPattern("\u00e9x"), "[\u00e9]x");
}

}  // namespace
}  // namespace tavo
