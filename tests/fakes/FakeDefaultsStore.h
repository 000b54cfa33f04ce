// A DefaultsStore in memory. Remembers every write in order. Can also hold what another program
// might have stored: arrays and dictionaries of mixed types, and a number in place of an array or
// dictionary.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/DefaultsStore.h"

namespace tavo {

class FakeDefaultsStore final : public DefaultsStore {
public:
    struct Write {
        std::string key;
        DefaultsValue value;

        bool operator==(const Write&) const = default;
    };

    using RawElement = std::variant<std::string, std::int64_t, bool>;
    using RawArray = std::vector<RawElement>;
    using RawDictionary = std::map<std::string, RawElement>;
    using RawValue = std::variant<Data, RawArray, RawDictionary, std::int64_t>;

    // The writes of the program under test, the first one first.
    std::vector<Write> writes;

    // Stores a value as another program would: it is not added to `writes`.
    void hold(const std::string& key, RawValue value) {
        values_.insert_or_assign(key, std::move(value));
    }
    void holdValue(const std::string& key, const DefaultsValue& value) { hold(key, raw(value)); }

    [[nodiscard]] bool holdsAnything() const { return !values_.empty(); }

    std::optional<std::string> data(std::string_view key) const override {
        const auto* const data = stored<Data>(key);
        return data != nullptr ? std::optional(data->bytes) : std::nullopt;
    }

    std::optional<StringArray> stringArray(std::string_view key) const override {
        const auto* const elements = stored<RawArray>(key);
        if (elements == nullptr) {
            return std::nullopt;
        }
        StringArray array;
        for (const RawElement& element : *elements) {
            const auto* const text = std::get_if<std::string>(&element);
            if (text == nullptr) {
                return std::nullopt;
            }
            array.push_back(*text);
        }
        return array;
    }

    std::optional<StringDictionary> stringDictionary(std::string_view key) const override {
        const auto* const members = stored<RawDictionary>(key);
        if (members == nullptr) {
            return std::nullopt;
        }
        StringDictionary dictionary;
        for (const auto& [name, element] : *members) {
            const auto* const text = std::get_if<std::string>(&element);
            if (text == nullptr) {
                return std::nullopt;
            }
            dictionary.emplace(name, *text);
        }
        return dictionary;
    }

    void set(std::string_view key, const DefaultsValue& value) override {
        writes.push_back({std::string(key), value});
        values_.insert_or_assign(std::string(key), raw(value));
    }

private:
    static RawValue raw(const DefaultsValue& value) {
        if (const auto* const array = std::get_if<StringArray>(&value)) {
            return RawArray(array->begin(), array->end());
        }
        if (const auto* const dictionary = std::get_if<StringDictionary>(&value)) {
            return RawDictionary(dictionary->begin(), dictionary->end());
        }
        return std::get<Data>(value);
    }

    template<typename Form>
    [[nodiscard]] const Form* stored(std::string_view key) const {
        const auto found = values_.find(key);
        return found != values_.end() ? std::get_if<Form>(&found->second) : nullptr;
    }

    std::map<std::string, RawValue, std::less<>> values_;
};

}  // namespace tavo
