#include <set>

#include <gtest/gtest.h>

#include "catalogue/LauncherCategory.h"
#include "tests/support/Vectors.h"

namespace tavo {
namespace {

std::vector<std::string> linesOf(const std::vector<LauncherCategory>& categories) {
    std::vector<std::string> lines;
    for (const LauncherCategory& category : categories) {
        lines.push_back(category.id + "|" + category.name + "|" + category.parentID.value_or("-"));
    }
    return lines;
}

// Decodes base64 with padding (RFC 4648).
std::string decodeBase64(std::string_view encoded) {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : encoded.substr(0, encoded.find('='))) {
        bits = (bits << 6) | static_cast<unsigned>(kAlphabet.find(c));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return bytes;
}

TEST(LauncherCategory, the_built_in_views_are_all_favorites_recent_hidden) {
    EXPECT_EQ(linesOf(makeFixedCategories()),
              (std::vector<std::string>{"all|Tutte|-", "favorites|Preferite|-", "recent|Recenti|-",
                                        "hidden|Nascoste|-"}));
}

TEST(LauncherCategory, the_default_categories_are_work_creative_utility) {
    EXPECT_EQ(
        linesOf(makeDefaultCategories()),
        (std::vector<std::string>{"work|Lavoro|-", "creative|Creatività|-", "utility|Utility|-"}));
}

TEST(LauncherCategory, without_a_parent_it_encodes_to_exactly_id_and_name) {
    EXPECT_EQ(encodeCategories({{"work", "Lavoro"}}), R"([{"id":"work","name":"Lavoro"}])");
}

TEST(LauncherCategory, a_parent_is_encoded) {
    EXPECT_EQ(encodeCategories({{"a", "A", "work"}}),
              R"([{"id":"a","name":"A","parentID":"work"}])");
}

TEST(LauncherCategory, a_null_parent_decodes_to_none_and_is_dropped_when_encoded_again) {
    const auto decoded = decodeCategories(R"([{"id":"a","name":"A","parentID":null}])");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->front().parentID, std::nullopt);
    EXPECT_EQ(encodeCategories(*decoded), R"([{"id":"a","name":"A"}])");
}

TEST(LauncherCategory, without_a_name_or_with_a_number_as_id_it_fails_the_whole_list) {
    EXPECT_FALSE(decodeCategories(R"([{"id":"b","name":"B"},{"id":"a"}])"));
    EXPECT_FALSE(decodeCategories(R"([{"id":"b","name":"B"},{"id":5,"name":"A"}])"));
}

TEST(LauncherCategory, equal_ids_with_different_names_compare_unequal) {
    const LauncherCategory a("x", "A");
    EXPECT_NE(a, LauncherCategory("x", "B"));
    EXPECT_NE(a, LauncherCategory("x", "A", "p"));
    EXPECT_EQ(a, LauncherCategory("x", "A"));
}

TEST(LauncherCategory, equal_ones_hash_alike_and_a_parent_changes_the_hash) {
    const std::hash<LauncherCategory> hash;
    EXPECT_EQ(hash({"x", "A"}), hash({"x", "A"}));
    EXPECT_NE(hash({"x", "A"}), hash({"x", "A", ""}));
    EXPECT_NE(hash({"x", "A"}), hash({"x", "B"}));
}

TEST(LauncherCategory, made_without_an_id_it_gets_a_36_character_upper_case_one_of_its_own) {
    std::set<std::string> ids;
    for (int i = 0; i < 50; ++i) {
        const LauncherCategory category("Giochi");
        EXPECT_EQ(category.id.size(), 36U);
        EXPECT_EQ(category.id.find_first_of("abcdef"), std::string::npos);
        EXPECT_TRUE(ids.insert(category.id).second);
    }
}

TEST(LauncherCategory, accented_letters_decode_raw_and_escaped) {
    for (const std::string json : {R"([{"id":"creative","name":"Creatività"}])",
                                   R"([{"id":"creative","name":"Creativit\u00e0"}])"}) {
        const auto decoded = decodeCategories(json);
        ASSERT_TRUE(decoded) << json;
        EXPECT_EQ(decoded->front().name, "Creatività");
    }
    const auto encoded = encodeCategories({{"creative", "Creatività"}});
    ASSERT_TRUE(encoded);
    EXPECT_NE(encoded->find("Creativit\xC3\xA0"), std::string::npos) << *encoded;
}

TEST(LauncherCategory, a_name_that_is_not_utf8_cannot_be_encoded) {
    EXPECT_EQ(encodeCategories({{"a", "\xff"}}), std::nullopt);
}

TEST(LauncherCategory, decodes_and_refuses_every_known_case) {
    for (const auto& row : vectorCases("category-json")) {
        const std::string json = decodeBase64(row.at("base64").get<std::string>());
        SCOPED_TRACE(json);
        const auto decoded = decodeCategories(json);
        ASSERT_EQ(decoded.has_value(), row.at("decodes").get<bool>());
        if (!decoded) {
            continue;
        }
        std::vector<std::string> expected;
        for (const auto& value : row.at("value")) {
            expected.push_back(value.at("id").get<std::string>() + "|" +
                               value.at("name").get<std::string>() + "|" +
                               value.value("parentID", std::string("-")));
        }
        EXPECT_EQ(linesOf(*decoded), expected);
    }
}

}  // namespace
}  // namespace tavo
