#include <cctype>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "support/Uuid.h"

namespace tavo {
namespace {

// The pattern of a text: X for each upper-case hexadecimal digit, all other characters unchanged.
std::string formOf(const std::string& text) {
    std::string form;
    for (const char character : text) {
        const bool isDigit = std::isxdigit(static_cast<unsigned char>(character)) != 0 &&
                             std::islower(static_cast<unsigned char>(character)) == 0;
        form += isDigit ? 'X' : character;
    }
    return form;
}

TEST(Uuid, text_is_36_characters_upper_case_and_hyphenated) {
    for (int i = 0; i < 100; ++i) {
        const std::string text = Uuid::random().text();
        ASSERT_EQ(formOf(text), "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX");
        EXPECT_EQ(text[14], '4');
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
    }
}

TEST(Uuid, no_two_are_the_same) {
    std::set<std::string> seen;
    for (int i = 0; i < 10000; ++i) {
        EXPECT_TRUE(seen.insert(Uuid::random().text()).second);
    }
}

}  // namespace
}  // namespace tavo
