// Configuration files of groups and keys: index.theme, settings.ini, kdeglobals, lxqt.conf. Desktop
// entries have a stricter grammar and a reader of their own (DesktopEntry.h).
//
// Accepts what the grammars of GLib, KDE and Qt have in common: "[group]" and "key=value" lines,
// "#" and ";" comments, white space around keys and values. Any other line is passed over. Any
// thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// Walks through the lines of a text, which must outlive this object.
class KeyFileLines {
public:
    explicit KeyFileLines(std::string_view text) : rest_(text) {}

    // Goes on to the next key, past group headings. False at the end of the text.
    bool next();

    // The group, key and value last reached, as views into the text. Escapes are left as written.
    [[nodiscard]] std::string_view group() const { return group_; }
    [[nodiscard]] std::string_view key() const { return key_; }
    [[nodiscard]] std::string_view value() const { return value_; }

private:
    std::string_view rest_;
    std::string_view group_;
    std::string_view key_;
    std::string_view value_;
};

// The largest file that is read. Real ones have a few kilobytes.
inline constexpr std::size_t kLargestKeyFile = std::size_t{1} << 20;  // bytes

// The value of `key` in the file at `path`; the last one where the key is repeated. Absent also
// when the file cannot be read, is not regular or is larger than kLargestKeyFile. A flag of KDE's
// at the key ("Theme[$i]") does not matter.
std::optional<std::string> keyFileValue(const std::string& path, std::string_view group,
                                        std::string_view key);

}  // namespace tavo
