// The user's defaults: small typed values under string keys that survive everything.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "support/StringTypes.h"

namespace tavo {

// Bytes without a meaning of their own to the store.
struct Data {
    std::string bytes;

    bool operator==(const Data&) const = default;
};

using DefaultsValue = std::variant<Data, StringArray, StringDictionary>;

// A reader answers only when the stored value is exactly of the form asked for; an array or a
// dictionary with one element of another type is absent as a whole. Every read sees what is
// stored now, also by another process. A value that cannot be read stays where it is until its
// key is next written.
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

    // Replaces whatever stands under `key`. On disk when it returns, unless refused.
    virtual void set(std::string_view key, const DefaultsValue& value) = 0;
};

}  // namespace tavo
