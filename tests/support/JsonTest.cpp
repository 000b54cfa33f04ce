#include <string>

#include <gtest/gtest.h>

#include "support/Json.h"

namespace tavo::json {
namespace {

std::string nested(std::size_t levels, const std::string& inside) {
    return std::string(levels, '[') + inside + std::string(levels, ']');
}

TEST(JsonWriting, is_compact) {
    EXPECT_EQ(write(StringArray{"a", "b c"}), R"(["a","b c"])");
    EXPECT_EQ(write(StringDictionary{{"k", "v"}}), R"({"k":"v"})");
    EXPECT_EQ(write(StringArrayDictionary{{"k", {"x", "y"}}, {"l", {}}}),
              R"({"k":["x","y"],"l":[]})");
    EXPECT_EQ(writeArray({{{"id", "1"}}, {}}), R"([{"id":"1"},{}])");
}

TEST(JsonWriting, of_nothing_is_an_empty_array_or_object) {
    EXPECT_EQ(write(StringArray{}), "[]");
    EXPECT_EQ(write(StringDictionary{}), "{}");
    EXPECT_EQ(write(StringArrayDictionary{}), "{}");
    EXPECT_EQ(writeArray({}), "[]");
}

TEST(JsonWriting, reads_back_as_it_was) {
    const std::string odd = std::string("\"\\/\b\f\n\r\t\x01\x7F\0 é€😀\u2028\uFEFF", 27) + "x";
    const StringArray array{odd, "", "[]", "null"};
    EXPECT_EQ(readStringArray(write(array).value()), array);
    const StringDictionary dictionary{{odd, "v"}, {"", odd}};
    EXPECT_EQ(readStringDictionary(write(dictionary).value()), dictionary);
    const StringArrayDictionary lists{{odd, array}, {"none", {}}};
    EXPECT_EQ(readStringArrayDictionary(write(lists).value()), lists);
    const std::vector<StringDictionary> objects{{{"id", odd}, {"name", ""}}, {}};
    EXPECT_EQ(readObjectArray(writeArray(objects).value(), {"id", "name"}), objects);
}

TEST(JsonWriting, of_text_that_is_not_utf_8_is_absent) {
    for (const char* bytes : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80", "\x80"}) {
        EXPECT_EQ(write(StringArray{"fine", bytes}), std::nullopt);
        EXPECT_EQ(write(StringDictionary{{"k", bytes}}), std::nullopt);
        EXPECT_EQ(write(StringDictionary{{bytes, "v"}}), std::nullopt);
        EXPECT_EQ(write(StringArrayDictionary{{"k", {bytes}}}), std::nullopt);
        EXPECT_EQ(write(StringArrayDictionary{{bytes, {}}}), std::nullopt);
        EXPECT_EQ(writeArray({{{"k", bytes}}}), std::nullopt);
    }
}

TEST(JsonReading, takes_white_space_and_a_byte_order_mark) {
    EXPECT_EQ(readStringArray(" \t\r\n[ \"a\" , \"b\" ] \n"), (StringArray{"a", "b"}));
    EXPECT_EQ(readStringArray("\xEF\xBB\xBF[\"a\"]"), StringArray{"a"});
    EXPECT_EQ(readStringArray("\xEF\xBB\xBF \n[]"), StringArray{});
}

TEST(JsonReading, takes_every_escape) {
    EXPECT_EQ(readStringArray(R"(["\"\\\/\b\f\n\r\t\u00e9\u20AC\ud83d\ude00"])"),
              StringArray{"\"\\/\b\f\n\r\té€😀"});
    EXPECT_EQ(readStringArray("[\"\\u0000\"]"), (StringArray{std::string(1, '\0')}));
    EXPECT_EQ(readStringArray("[\"\\\\\",\"1234567890\",\"\\\"123456\"]"),
              (StringArray{"\\", "1234567890", "\"123456"}));
}

TEST(JsonReading, refuses_what_is_not_strict_json) {
    struct Row {
        const char* name;
        std::string text;
    };
    for (const Row& row : {
             Row{"nothing", ""},
             Row{"white space alone", " \n"},
             Row{"a byte order mark alone", "\xEF\xBB\xBF"},
             Row{"half a byte order mark", "\xEF\xBB[]"},
             Row{"two byte order marks", "\xEF\xBB\xBF\xEF\xBB\xBF[]"},
             Row{"a byte order mark after white space", " \xEF\xBB\xBF[]"},
             Row{"a byte order mark at the end", "[]\xEF\xBB\xBF"},
             Row{"UTF-16", std::string("[\0]\0", 4)},
             Row{"more behind the value", "[] []"},
             Row{"NUL behind the value", std::string("[]\0", 3)},
             Row{"NUL and more behind the value", std::string("[]\0]", 4)},
             Row{"NUL in a string", std::string("[\"a\0b\"]", 7)},
             Row{"no-break space", "[\u00A0]"},
             Row{"form feed", "[\f]"},
             Row{"trailing comma", R"(["a",])"},
             Row{"leading comma", R"([,"a"])"},
             Row{"missing comma", R"(["a" "b"])"},
             Row{"unclosed", R"(["a")"},
             Row{"unclosed string", R"(["a])"},
             Row{"comment", R"(["a"/* b */])"},
             Row{"line comment", "[\"a\"] // b\n"},
             Row{"single quotes", "['a']"},
             Row{"line break in a string", "[\"a\nb\"]"},
             Row{"tab in a string", "[\"a\tb\"]"},
             Row{"unknown escape", R"(["\a"])"},
             Row{"short escape", R"(["\u12"])"},
             Row{"high surrogate alone", R"(["\ud83d"])"},
             Row{"high surrogate before a letter", R"(["\ud83dx"])"},
             Row{"high surrogate before another", R"(["\ud83d\ud83d"])"},
             Row{"low surrogate alone", R"(["\ude00"])"},
             Row{"ill-formed UTF-8", "[\"\xFF\"]"},
             Row{"truncated UTF-8", "[\"\xC3\"]"},
             Row{"overlong UTF-8", "[\"\xC0\x80\"]"},
             Row{"surrogate in UTF-8", "[\"\xED\xA0\x80\"]"},
             Row{"ill-formed UTF-8 outside strings", "[\xFF]"},
             Row{"a bare word", "[a]"},
         }) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(readStringArray(row.text), std::nullopt);
        EXPECT_EQ(readObjectArray(row.text, {}), std::nullopt);
    }
}

TEST(JsonReading, refuses_values_of_another_type) {
    for (const char* text : {"null", "true", "1", "\"a\"", "{}", "[1]", "[null]", "[true]",
                             R"(["a",1])", R"([["a"]])", "[{}]", "[1.5]"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(readStringArray(text), std::nullopt);
    }
    for (const char* text : {"null", "[]", "\"a\"", R"({"a":1})", R"({"a":null})", R"({"a":["b"]})",
                             R"({"a":"b","c":true})", R"({"a":{}})"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(readStringDictionary(text), std::nullopt);
    }
    for (const char* text : {"null", "[]", R"({"a":"b"})", R"({"a":[1]})", R"({"a":null})",
                             R"({"a":["b"],"c":["d",null]})", R"({"a":{}})"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(readStringArrayDictionary(text), std::nullopt);
    }
    for (const char* text : {"null", "{}", R"([1])", R"([{"id":"1"},null])", R"([{"id":1}])",
                             R"([{"id":["a"]}])", R"([{"id":true}])", R"([[]])"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(readObjectArray(text, {"id"}), std::nullopt);
    }
}

TEST(JsonReading, lets_the_last_of_members_with_one_name_hold) {
    EXPECT_EQ(readStringDictionary(R"({"a":"1","b":"x","a":"2"})"),
              (StringDictionary{{"a", "2"}, {"b", "x"}}));
    EXPECT_EQ(readStringDictionary(R"({"a":1,"a":"2"})"), (StringDictionary{{"a", "2"}}));
    EXPECT_EQ(readStringDictionary(R"({"a":"2","a":1})"), std::nullopt);
    EXPECT_EQ(readStringDictionary(R"({"a":"1","\u0061":"2"})"), (StringDictionary{{"a", "2"}}));
    EXPECT_EQ(readStringArrayDictionary(R"({"a":["1","2"],"a":["3"]})"),
              (StringArrayDictionary{{"a", {"3"}}}));
    using Objects = std::vector<StringDictionary>;
    EXPECT_EQ(readObjectArray(R"([{"id":"1","id":null}])", {"id"}), (Objects{{}}));
    EXPECT_EQ(readObjectArray(R"([{"id":{"id":"0"},"id":"1"}])", {"id"}), (Objects{{{"id", "1"}}}));
    EXPECT_EQ(readObjectArray(R"([{"id":"1","id":2}])", {"id"}), std::nullopt);
}

TEST(JsonReading, looks_only_at_the_wanted_members_of_objects) {
    using Objects = std::vector<StringDictionary>;
    EXPECT_EQ(readObjectArray(R"([{"id":"1","name":null,"x":[{"id":2}],"y":{"name":3},"z":-1.5e3},
                                  {"name":"n"},{}])",
                              {"id", "name"}),
              (Objects{{{"id", "1"}}, {{"name", "n"}}, {}}));
    EXPECT_EQ(readObjectArray(R"([{"id":"1"}])", {}), (Objects{{}}));
    EXPECT_EQ(readObjectArray("[]", {"id"}), Objects{});
}

TEST(JsonReading, does_not_mind_any_number_in_an_ignored_member) {
    using Objects = std::vector<StringDictionary>;
    const std::string digits(100'000, '9');
    std::string longest = digits;
    longest.append(".").append(digits).append("e").append(digits);
    for (const std::string& number :
         {std::string("1e999"), std::string("-1E+99999"), std::string("1e-99999"), std::string("0"),
          std::string("-0"), std::string("0.00001"), std::string("10"), std::string("100"),
          std::string("18446744073709551616"), digits, "-" + digits, longest}) {
        SCOPED_TRACE(number.substr(0, 30));
        EXPECT_EQ(readObjectArray("[{\"id\":\"123456\",\"x\":" + number + "}]", {"id"}),
                  (Objects{{{"id", "123456"}}}));
    }
}

TEST(JsonReading, refuses_numbers_that_are_not_json) {
    for (const char* number :
         {"01", "00",  "001",  "0001",  "-",   "-01",      "+1",        "1.", ".5",    "1.e5",
          "1e", "1e+", "0x10", "1_000", "NaN", "Infinity", "-Infinity", "1a", "1234x", "1 2"}) {
        SCOPED_TRACE(number);
        EXPECT_EQ(readObjectArray(std::string("[{\"x\":") + number + "}]", {"id"}), std::nullopt);
    }
}

TEST(JsonReading, takes_512_levels_and_refuses_more) {
    const auto inside = [](std::size_t levels) {
        return "[{\"x\":" + nested(levels - 2, "") + "}]";
    };
    EXPECT_TRUE(readObjectArray(inside(512), {"id"}).has_value());
    EXPECT_EQ(readObjectArray(inside(513), {"id"}), std::nullopt);
    // Many elements side by side do not count as levels.
    std::string siblings = "[{}";
    for (int i = 0; i < 2'000; ++i) {
        siblings += ",{\"x\":[{}]}";
    }
    EXPECT_EQ(readObjectArray(siblings + "]", {}).value().size(), 2'001U);
}

TEST(JsonReading, survives_hostile_nesting) {
    constexpr std::size_t kMany = 1'000'000;
    EXPECT_EQ(readStringArray(std::string(kMany, '[')), std::nullopt);
    EXPECT_EQ(readStringArray(nested(kMany, "")), std::nullopt);
    std::string objects;
    for (std::size_t i = 0; i < kMany / 10; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(readStringDictionary(objects), std::nullopt);
}

}  // namespace
}  // namespace tavo::json
