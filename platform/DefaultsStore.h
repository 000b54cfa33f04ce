// The user's defaults: small typed values under string keys, kept from one run to the next.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "support/StringTypes.h"

namespace tavo {

// Bytes that the store does not interpret.
struct Data {
    std::string bytes;

    bool operator==(const Data&) const = default;
};

using DefaultsValue = std::variant<Data, StringArray, StringDictionary>;

// data(), stringArray() and stringDictionary() are absent unless the stored value is exactly of
// that type; an array or a dictionary with one element of another type is absent as a whole. Every
// read sees what is stored now, also by another process. A value that cannot be read stays in the
// store until its key is next written.
//
// Main thread. No call fails: a write that the system refuses is kept as pending, answers reads,
// and is tried again later, at the latest with the next write.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    [[nodiscard]] virtual std::optional<std::string> data(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<StringArray> stringArray(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<StringDictionary> stringDictionary(
        std::string_view key) const = 0;

    // Replaces whatever stands under `key`. The value is on disk when set() returns, unless the
    // system refused the write.
    virtual void set(std::string_view key, const DefaultsValue& value) = 0;
};

}  // namespace tavo
