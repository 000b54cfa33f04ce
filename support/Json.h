// Strict JSON (RFC 8259) for the few shapes that the program stores.
//
// Reading: UTF-8 only, a byte order mark at the start is skipped, nothing but white space around
// the value, no comments, at most 512 levels of nesting. Anything else, a string in another
// type's place included, makes the whole answer absent. Writing is compact; readers depend on
// neither member order nor escapes. Pure functions, any thread.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/StringTypes.h"

namespace tavo::json {

using StringArrayDictionary = std::map<std::string, StringArray>;

// Text that is not UTF-8 cannot be written: the answer is absent then.
std::optional<std::string> write(const StringArray& array);
std::optional<std::string> write(const StringDictionary& dictionary);
std::optional<std::string> write(const StringArrayDictionary& dictionary);
std::optional<std::string> writeArray(const std::vector<StringDictionary>& objects);

// A repeated member name: the last one holds.
std::optional<StringArray> readStringArray(std::string_view text);
std::optional<StringDictionary> readStringDictionary(std::string_view text);
std::optional<StringArrayDictionary> readStringArrayDictionary(std::string_view text);

// An array of objects of which only the members in `wanted` matter. A wanted member must be a
// string or null (null reads as missing); other members may hold anything.
std::optional<std::vector<StringDictionary>> readObjectArray(
    std::string_view text, const std::vector<std::string>& wanted);

}  // namespace tavo::json
