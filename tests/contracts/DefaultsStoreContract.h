// What every defaults store promises, as one suite over any of them.
//
// A World is one storage, empty at first:
//   DefaultsStore& store();                         the store under test
//   DefaultsStore& another();                       a second one over the same storage
//   void holdMixedArray(const std::string& key);    another program stored ["text", 7] there,
//   void holdMixedDictionary(const std::string&);   {"name": "text", "number": 7},
//   void holdNumber(const std::string& key);        and just 7
//
// INSTANTIATE_TYPED_TEST_SUITE_P(Name, DefaultsStoreContract, World);
#pragma once

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/DefaultsStore.h"

namespace tavo {

template<typename World>
class DefaultsStoreContract : public testing::Test {
protected:
    DefaultsStore& store() { return world_.store(); }
    DefaultsStore& another() { return world_.another(); }

    void expectAbsent(std::string_view key) {
        EXPECT_EQ(store().data(key), std::nullopt);
        EXPECT_EQ(store().stringArray(key), std::nullopt);
        EXPECT_EQ(store().stringDictionary(key), std::nullopt);
    }

    World world_;
};

TYPED_TEST_SUITE_P(DefaultsStoreContract);

TYPED_TEST_P(DefaultsStoreContract, a_key_never_written_is_absent_in_every_form) {
    this->expectAbsent("anything");
    this->expectAbsent("");
}

TYPED_TEST_P(DefaultsStoreContract, data_comes_back_byte_for_byte) {
    std::string bytes;
    for (int round = 0; round < 3; ++round) {
        for (int byte = 0; byte < 256; ++byte) {
            bytes.push_back(static_cast<char>(byte));
        }
    }
    this->store().set("key", Data{bytes});
    EXPECT_EQ(this->store().data("key"), bytes);
}

TYPED_TEST_P(DefaultsStoreContract, an_array_keeps_its_order_its_repeats_and_its_empty_strings) {
    const StringArray array = {"b", "a", "", "b", "/opt/A b.app"};
    this->store().set("key", array);
    EXPECT_EQ(this->store().stringArray("key"), array);
}

TYPED_TEST_P(DefaultsStoreContract, a_dictionary_comes_back_whole) {
    const StringDictionary dictionary = {{"work", "mail, office"}, {"", "no name"}, {"none", ""}};
    this->store().set("key", dictionary);
    EXPECT_EQ(this->store().stringDictionary("key"), dictionary);
}

TYPED_TEST_P(DefaultsStoreContract, an_empty_value_is_a_value) {
    this->store().set("data", Data{});
    this->store().set("array", StringArray{});
    this->store().set("dictionary", StringDictionary{});
    EXPECT_EQ(this->store().data("data"), "");
    EXPECT_EQ(this->store().stringArray("array"), StringArray{});
    EXPECT_EQ(this->store().stringDictionary("dictionary"), StringDictionary{});
}

TYPED_TEST_P(DefaultsStoreContract, text_of_any_kind_comes_back_unchanged) {
    using namespace std::string_literals;
    const StringArray texts = {
        "\"quoted\"", "back\\slash",  "new\nline\ttab", "nul\0inside"s, "Créativité", "日本語",
        "🚀",          "\u2028\u202e", "\x01\x1f\x7f",   "</script>",    "\\u0041",    "\U0010FFFF"};
    StringDictionary pairs;
    for (const std::string& text : texts) {
        pairs[text] = text;
    }
    this->store().set("array", texts);
    this->store().set("dictionary", pairs);
    EXPECT_EQ(this->store().stringArray("array"), texts);
    EXPECT_EQ(this->store().stringDictionary("dictionary"), pairs);
}

TYPED_TEST_P(DefaultsStoreContract, a_value_of_another_form_reads_as_absent) {
    // A store that guessed the form of a value could read each of these as another form.
    this->store().set("data", Data{"[\"text\"]"});
    this->store().set("array", StringArray{"text"});
    this->store().set("dictionary", StringDictionary{{"name", "text"}});
    EXPECT_EQ(this->store().stringArray("data"), std::nullopt);
    EXPECT_EQ(this->store().stringDictionary("data"), std::nullopt);
    EXPECT_EQ(this->store().data("array"), std::nullopt);
    EXPECT_EQ(this->store().stringDictionary("array"), std::nullopt);
    EXPECT_EQ(this->store().data("dictionary"), std::nullopt);
    EXPECT_EQ(this->store().stringArray("dictionary"), std::nullopt);
}

TYPED_TEST_P(DefaultsStoreContract, a_later_value_takes_the_place_of_an_earlier_one) {
    this->store().set("key", Data{"first"});
    this->store().set("key", Data{"second"});
    EXPECT_EQ(this->store().data("key"), "second");
    this->store().set("key", StringArray{"third"});
    EXPECT_EQ(this->store().data("key"), std::nullopt);
    EXPECT_EQ(this->store().stringArray("key"), StringArray{"third"});
}

TYPED_TEST_P(DefaultsStoreContract, keys_are_told_apart_by_every_byte) {
    using namespace std::string_literals;
    const StringArray keys = {"", "k", "K", "k ", "k\0"s, "k\0a"s, "k.v1", "ké", "ke\u0301", "%"};
    for (const std::string& key : keys) {
        this->store().set(key, Data{"of " + key});
    }
    for (const std::string& key : keys) {
        EXPECT_EQ(this->store().data(key), "of " + key);
    }
}

TYPED_TEST_P(DefaultsStoreContract, one_element_that_is_no_text_makes_an_array_absent) {
    this->world_.holdMixedArray("key");
    this->expectAbsent("key");
}

TYPED_TEST_P(DefaultsStoreContract, one_member_that_is_no_text_makes_a_dictionary_absent) {
    this->world_.holdMixedDictionary("key");
    this->expectAbsent("key");
}

TYPED_TEST_P(DefaultsStoreContract, a_number_is_never_turned_into_text) {
    this->world_.holdNumber("key");
    this->expectAbsent("key");
}

TYPED_TEST_P(DefaultsStoreContract, an_unreadable_value_yields_to_the_next_write_of_its_key) {
    this->world_.holdMixedArray("key");
    this->store().set("another key", Data{"untouched"});
    this->store().set("key", StringArray{"readable"});
    EXPECT_EQ(this->store().stringArray("key"), StringArray{"readable"});
    EXPECT_EQ(this->store().data("another key"), "untouched");
}

TYPED_TEST_P(DefaultsStoreContract, a_write_is_seen_by_another_reader_at_its_next_read) {
    EXPECT_EQ(this->another().data("key"), std::nullopt);
    for (const char* const value : {"first", "second", "third"}) {
        this->store().set("key", Data{value});
        EXPECT_EQ(this->another().data("key"), value);
    }
    this->another().set("key", StringArray{"from there"});
    EXPECT_EQ(this->store().stringArray("key"), StringArray{"from there"});
}

TYPED_TEST_P(DefaultsStoreContract, text_that_is_not_utf8_is_answered_as_it_was_set) {
    const StringArray array = {"fine", "\xff\xfe"};
    const StringDictionary dictionary = {{"\xc3", "cut short"}};
    this->store().set("array", array);
    this->store().set("dictionary", dictionary);
    EXPECT_EQ(this->store().stringArray("array"), array);
    EXPECT_EQ(this->store().stringDictionary("dictionary"), dictionary);
}

REGISTER_TYPED_TEST_SUITE_P(
    DefaultsStoreContract, a_key_never_written_is_absent_in_every_form,
    data_comes_back_byte_for_byte, an_array_keeps_its_order_its_repeats_and_its_empty_strings,
    a_dictionary_comes_back_whole, an_empty_value_is_a_value, text_of_any_kind_comes_back_unchanged,
    a_value_of_another_form_reads_as_absent, a_later_value_takes_the_place_of_an_earlier_one,
    keys_are_told_apart_by_every_byte, one_element_that_is_no_text_makes_an_array_absent,
    one_member_that_is_no_text_makes_a_dictionary_absent, a_number_is_never_turned_into_text,
    an_unreadable_value_yields_to_the_next_write_of_its_key,
    a_write_is_seen_by_another_reader_at_its_next_read,
    text_that_is_not_utf8_is_answered_as_it_was_set);

}  // namespace tavo
