#include "support/Json.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace tavo::json {
namespace {

using Value = nlohmann::json;

constexpr std::size_t kMaximalDepth = 512;

// Builds the value of a text out of what the parser sees in it. The parser keeps its place in a
// list of its own and the value is never deeper than kMaximalDepth, so that no input can exhaust
// the stack.
class Builder : public nlohmann::json_sax<Value> {
public:
    Value take() { return std::move(root_); }

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    // Nothing that is read here has numbers; one stands for them all.
    bool number_integer(number_integer_t) override { return add(0); }
    bool number_unsigned(number_unsigned_t) override { return add(0); }
    bool number_float(number_float_t, const string_t&) override { return add(0); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Value::object()); }
    bool start_array(std::size_t) override { return open(Value::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override {
        // A later member of the same name takes the place of an earlier one.
        place_ = &(*open_.back())[std::move(name)];
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
        return false;
    }

private:
    Value* put(Value value) {
        if (open_.empty()) {
            root_ = std::move(value);
            return &root_;
        }
        if (open_.back()->is_array()) {
            return &open_.back()->emplace_back(std::move(value));
        }
        *place_ = std::move(value);
        return place_;
    }

    bool add(Value value) {
        put(std::move(value));
        return true;
    }

    bool open(Value value) {
        if (open_.size() == kMaximalDepth) {
            return false;
        }
        open_.push_back(put(std::move(value)));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    Value root_;
    std::vector<Value*> open_;  // the arrays and objects around the place reached, outermost first
    Value* place_ = nullptr;    // of the member whose name was read last
};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// The same text with at most two digits in a row outside strings. The parser refuses numbers that
// it cannot represent, such as 1e999, which are perfectly good JSON; shortened ones are valid
// exactly when the long ones are.
std::string withShortNumbers(std::string_view text) {
    constexpr std::size_t kMaximalDigits = 2;
    std::string result;
    result.reserve(text.size());
    bool inString = false;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        digits = !inString && isDigit(character) ? digits + 1 : 0;
        if (digits > kMaximalDigits) {
            continue;
        }
        result += character;
        if (character == '"') {
            inString = !inString;
        } else if (character == '\\' && inString && i + 1 < text.size()) {
            result += text[++i];
        }
    }
    return result;
}

std::optional<Value> parsed(std::string_view text) {
    // The parser takes NUL for the end of the text. It is nowhere part of valid JSON.
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const std::string source = withShortNumbers(text);
    Builder builder;
    if (!Value::sax_parse(source, &builder)) {
        return std::nullopt;
    }
    return builder.take();
}

std::optional<std::string> written(const Value& value) {
    try {
        return value.dump();
    } catch (const Value::exception&) {
        return std::nullopt;
    }
}

std::optional<StringArray> asStringArray(Value& value) {
    if (!value.is_array()) {
        return std::nullopt;
    }
    StringArray strings;
    strings.reserve(value.size());
    for (Value& element : value) {
        if (!element.is_string()) {
            return std::nullopt;
        }
        strings.push_back(std::move(element.get_ref<std::string&>()));
    }
    return strings;
}

// The members `wanted` of an object, all of which are strings, null or missing.
std::optional<StringDictionary> asRecord(Value& value, const std::vector<std::string>& wanted) {
    if (!value.is_object()) {
        return std::nullopt;
    }
    StringDictionary record;
    for (const std::string& name : wanted) {
        const auto member = value.find(name);
        if (member == value.end() || member->is_null()) {
            continue;
        }
        if (!member->is_string()) {
            return std::nullopt;
        }
        record[name] = std::move(member->get_ref<std::string&>());
    }
    return record;
}

}  // namespace

std::optional<std::string> write(const StringArray& array) {
    return written(array);
}

std::optional<std::string> write(const StringDictionary& dictionary) {
    return written(dictionary);
}

std::optional<std::string> write(const StringArrayDictionary& dictionary) {
    return written(dictionary);
}

std::optional<std::string> writeArray(const std::vector<StringDictionary>& objects) {
    return written(objects);
}

std::optional<StringArray> readStringArray(std::string_view text) {
    auto value = parsed(text);
    return value ? asStringArray(*value) : std::nullopt;
}

std::optional<StringDictionary> readStringDictionary(std::string_view text) {
    auto value = parsed(text);
    if (!value || !value->is_object()) {
        return std::nullopt;
    }
    StringDictionary dictionary;
    for (auto& [name, member] : value->items()) {
        if (!member.is_string()) {
            return std::nullopt;
        }
        dictionary[name] = std::move(member.get_ref<std::string&>());
    }
    return dictionary;
}

std::optional<StringArrayDictionary> readStringArrayDictionary(std::string_view text) {
    auto value = parsed(text);
    if (!value || !value->is_object()) {
        return std::nullopt;
    }
    StringArrayDictionary dictionary;
    for (auto& [name, member] : value->items()) {
        auto strings = asStringArray(member);
        if (!strings) {
            return std::nullopt;
        }
        dictionary[name] = std::move(*strings);
    }
    return dictionary;
}

std::optional<std::vector<StringDictionary>> readObjectArray(
    std::string_view text, const std::vector<std::string>& wanted) {
    auto value = parsed(text);
    if (!value || !value->is_array()) {
        return std::nullopt;
    }
    std::vector<StringDictionary> objects;
    objects.reserve(value->size());
    for (Value& element : *value) {
        auto record = asRecord(element, wanted);
        if (!record) {
            return std::nullopt;
        }
        objects.push_back(std::move(*record));
    }
    return objects;
}

}  // namespace tavo::json
