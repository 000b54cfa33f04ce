#include <string>

#include <gtest/gtest.h>

#include "catalogue/CategoryRule.h"

namespace tavo {
namespace {

struct Row {
    const char* name;
    const char* ruleText;
    std::vector<std::string_view> keywords;
};

TEST(CategoryRule, keywords_are_what_stands_between_commas) {
    const Row rows[] = {
        {"three keywords", "code, terminal,  git", {"code", "terminal", "git"}},
        {"nothing", "", {}},
        {"only commas and spaces", " , ,,  ", {}},
        {"spaces inside stay", "visual studio,x", {"visual studio", "x"}},
        {"line breaks around a keyword go", "a,\n b \n,c", {"a", "b", "c"}},
        {"a comma at the end", "a,", {"a"}},
        {"case stays as typed", "Code", {"Code"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(keywordsOf(row.ruleText), row.keywords);
    }
}

}  // namespace
}  // namespace tavo
