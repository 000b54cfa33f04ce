// Marks: values for the defaults store, of all forms and many sizes, which a writer stores in the
// order of their numbers. Each is made from its number alone, so that a reader can tell whether it
// is unaltered.
#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "platform/DefaultsStore.h"

namespace tavo {

// A writer stores its marks under so many keys in turn. A key always gets the same form of value.
constexpr int kMarkKeys = 6;

inline std::string markKey(const std::string& writer, int number) {
    return writer + ".mark." + std::to_string(number % kMarkKeys);
}

inline DefaultsValue markValue(int number) {
    const std::string text = std::to_string(number);
    // The values take from a part of a database page to half a dozen pages.
    const int size = number * 397 % 1000;
    switch (number % 3) {
        case 0: {
            Data data{text + " "};
            for (int i = 0; i < size * 20; ++i) {
                data.bytes.push_back(static_cast<char>(number + i * 7));
            }
            return data;
        }
        case 1: {
            StringArray array = {text};
            for (int i = 0; i < size; ++i) {
                array.push_back("/opt/" + std::to_string(number + i) + ".app");
            }
            return array;
        }
        default: {
            StringDictionary dictionary = {{"number", text}};
            for (int i = 0; i < size; ++i) {
                dictionary.emplace("rule " + std::to_string(i), "keyword " + text);
            }
            return dictionary;
        }
    }
}

// The number of the mark that is stored under the key of mark `number`; 0 when none is; nullopt
// when the stored value is not exactly a mark.
inline std::optional<int> storedMark(const DefaultsStore& store, const std::string& writer,
                                     int number) {
    const std::string key = markKey(writer, number);
    std::optional<DefaultsValue> value;
    std::string text;
    if (const auto data = store.data(key)) {
        text = data->substr(0, data->find(' '));
        value = Data{*data};
    } else if (const auto array = store.stringArray(key)) {
        text = array->empty() ? "" : array->front();
        value = *array;
    } else if (const auto dictionary = store.stringDictionary(key)) {
        const auto found = dictionary->find("number");
        text = found != dictionary->end() ? found->second : "";
        value = *dictionary;
    } else {
        return 0;
    }
    if (text.empty() || text.size() > 9 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    const int stored = std::stoi(text);
    return markKey(writer, stored) == key && markValue(stored) == *value ? std::optional(stored)
                                                                         : std::nullopt;
}

// The highest number of a mark that `writer` has stored, 0 for none; nullopt when one of the stored
// values is not exactly a mark.
inline std::optional<int> lastMark(const DefaultsStore& store, const std::string& writer) {
    int last = 0;
    for (int key = 0; key < kMarkKeys; ++key) {
        const std::optional<int> stored = storedMark(store, writer, key);
        if (!stored) {
            return std::nullopt;
        }
        last = std::max(last, *stored);
    }
    return last;
}

}  // namespace tavo
