#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "support/Uuid.h"

namespace tavo {
namespace {

TEST(Uuid, text_is_36_characters_upper_case_and_hyphenated) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(std::regex_match(Uuid::random().text(), form));
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
