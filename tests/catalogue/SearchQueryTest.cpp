#include <gtest/gtest.h>

#include "catalogue/SearchQuery.h"
#include "tests/support/Vectors.h"

namespace tavo {
namespace {

TEST(SearchQuery, every_known_case_parses_as_expected) {
    for (const auto& row : vectorCases("query")) {
        const std::string query = row.at("query").get<std::string>();
        SCOPED_TRACE(query);
        EXPECT_EQ(parseQuery(query).category, row.at("category").get<std::string>());
        EXPECT_EQ(parseQuery(query).text, row.at("text").get<std::string>());
    }
}

struct Row {
    const char* name;
    const char* query;
    SearchQuery expected;
};

TEST(SearchQuery, separators_and_prefixes_that_carry_marks_are_ordinary_text) {
    const Row rows[] = {
        {"a space with an accent joins its neighbours", "a \u0301b c", {"", "a \u0301b c"}},
        {"a space before a joiner does not separate", "cat:a \u200Db", {"a \u200Db", ""}},
        {"a space before a spacing mark does not separate", "x \u0903y", {"", "x \u0903y"}},
        {"a colon before a joiner makes no prefix", "cat:\u200Dx", {"", "cat:\u200Dx"}},
        {"a second colon belongs to the category", "cat:a:b", {"a:b", ""}},
        {"only the first category term counts", "cat:a cat:b c", {"a", "c"}},
        {"a long run of spaces is one separator", "   a     b ", {"", "a b"}},
        {"ill-formed bytes are text", "a \xff", {"", "a \xff"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parseQuery(row.query), row.expected);
    }
}

}  // namespace
}  // namespace tavo
