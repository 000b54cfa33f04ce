// Files of groups and keys that configure: index.theme, settings.ini, kdeglobals.
//
// The common ground of their grammars: "[group]" and "key=value" lines, "#" and ";" comments, white
// space around keys and values without meaning. What is neither is passed over. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// Walks through the lines of a text that must outlive it.
class KeyFileLines {
public:
    explicit KeyFileLines(std::string_view text) : rest_(text) {}

    // Goes on to the next key, and past the group headings before it. False at the end.
    bool next();

    // Of the key last reached; views into the text. Values are as written, escapes included.
    [[nodiscard]] std::string_view group() const { return group_; }
    [[nodiscard]] std::string_view key() const { return key_; }
    [[nodiscard]] std::string_view value() const { return value_; }

private:
    std::string_view rest_;
    std::string_view group_;
    std::string_view key_;
    std::string_view value_;
};

// No file of this kind comes near it.
inline constexpr std::size_t kLargestKeyFile = std::size_t{1} << 20;  // bytes

// The value in the file at `path`; of a key that comes twice, the last one. Absent when the file
// cannot be read or is no regular file of at most kLargestKeyFile. A key may carry a flag
// ("Theme[$i]").
std::optional<std::string> keyFileValue(const std::string& path, std::string_view group,
                                        std::string_view key);

}  // namespace tavo
