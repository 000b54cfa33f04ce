#include "platform/linux/entries/DesktopEntry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "support/Text.h"

namespace tavo {
namespace {

enum Key : std::size_t {
    kType,
    kName,
    kIcon,
    kExec,
    kTryExec,
    kPath,
    kOnlyShowIn,
    kNotShowIn,
    kHidden,
    kNoDisplay,
    kTerminal,
    kStartupNotify,
    kDBusActivatable,
    kStartupWmClass,
    kKeyCount
};

constexpr std::array<std::string_view, kKeyCount> kKeyNames = {"Type",
                                                               "Name",
                                                               "Icon",
                                                               "Exec",
                                                               "TryExec",
                                                               "Path",
                                                               "OnlyShowIn",
                                                               "NotShowIn",
                                                               "Hidden",
                                                               "NoDisplay",
                                                               "Terminal",
                                                               "StartupNotify",
                                                               "DBusActivatable",
                                                               "StartupWMClass"};

using RawValue = std::optional<std::string_view>;

// GLib's white space, to which the vertical tab does not belong.
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

constexpr unsigned char kInKey = 1;
constexpr unsigned char kInLocale = 2;

// The characters of nearly every key and locale; the rest is left to the slower, complete rules.
constexpr std::array<unsigned char, 256> kCharacters = [] {
    std::array<unsigned char, 256> table{};
    const std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.@";
    for (const char c : plain) {
        const bool inKey = c != '_' && c != '.' && c != '@';
        table[static_cast<unsigned char>(c)] = inKey ? kInKey | kInLocale : kInLocale;
    }
    return table;
}();

std::size_t skip(std::string_view text, std::size_t from, unsigned char characters) {
    while (from < text.size() &&
           (kCharacters[static_cast<unsigned char>(text[from])] & characters) != 0) {
        ++from;
    }
    return from;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    std::size_t start = 0;
    while (start < text.size() && isBlank(text[start])) {
        ++start;
    }
    return text.substr(start);
}

std::string_view withoutTrailingBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// The name in a line "[name]". Absent when the line is no group.
std::optional<std::string_view> groupName(std::string_view line) {
    const std::size_t close = line.find(']');
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    std::size_t rest = close + 1;
    while (rest < line.size() && isContinuation(line[rest])) {
        ++rest;
    }
    if (line.find_first_not_of(" \t", rest) != std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view name = line.substr(1, close - 1);
    if (name.empty() || name.find('[') != std::string_view::npos ||
        std::any_of(name.begin(), name.end(), isControl)) {
        return std::nullopt;
    }
    return name;
}

bool isInLocale(std::string_view text) {
    if (static_cast<unsigned char>(text.front()) < 0x80) {
        return (kCharacters[static_cast<unsigned char>(text.front())] & kInLocale) != 0;
    }
    const gunichar scalar =
        g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    return scalar <= 0x10ffff && g_unichar_isalnum(scalar) != FALSE;
}

// The end of the locale that starts at `from`. Bytes that continue nothing pass.
std::size_t localeEnd(std::string_view key, std::size_t from) {
    while (from < key.size() && isInLocale(key.substr(from))) {
        do {
            ++from;
        } while (from < key.size() && isContinuation(key[from]));
    }
    return from;
}

struct SplitKey {
    std::string_view name;
    RawValue locale;  // what stands in "[...]" after the name
};

// Absent when `key` cannot be one.
std::optional<SplitKey> splitKey(std::string_view key) {
    const std::size_t bracket = std::min(key.find_first_of("[]"), key.size());
    const std::string_view name = key.substr(0, bracket);
    if (name.empty() || name.front() == ' ' || name.back() == ' ') {
        return std::nullopt;
    }
    if (bracket == key.size()) {
        return SplitKey{name, std::nullopt};
    }
    const std::size_t end = localeEnd(key, bracket + 1);
    if (key[bracket] != '[' || end + 1 != key.size() || key[end] != ']') {
        return std::nullopt;
    }
    return SplitKey{name, key.substr(bracket + 1, end - bracket - 1)};
}

std::optional<char> unescaped(char c) {
    switch (c) {
        case 's':
            return ' ';
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case '\\':
            return '\\';
        default:
            return std::nullopt;
    }
}

// Escapes that mean nothing stay as they are; a backslash at the very end is dropped.
std::string decoded(std::string_view raw) {
    std::size_t backslash = raw.find('\\');
    std::string text(raw.substr(0, backslash));
    while (backslash != std::string_view::npos && backslash + 1 < raw.size()) {
        const char escape = raw[backslash + 1];
        if (const auto character = unescaped(escape)) {
            text += *character;
        } else {
            text += {'\\', escape};
        }
        const std::size_t next = raw.find('\\', backslash + 2);
        text += raw.substr(backslash + 2, next - backslash - 2);
        backslash = next;
    }
    return text;
}

std::string stringOf(const RawValue& raw) {
    return raw && isUtf8(*raw) ? decoded(*raw) : std::string();
}

// A list with an escape that means nothing is no list at all.
std::optional<std::vector<std::string>> listOf(const RawValue& raw) {
    if (!raw || !isUtf8(*raw)) {
        return std::nullopt;
    }
    std::vector<std::string> list;
    std::string piece;
    for (std::size_t i = 0; i < raw->size(); ++i) {
        const char c = (*raw)[i];
        if (c == ';') {
            list.push_back(std::move(piece));
            piece.clear();
        } else if (c != '\\') {
            piece += c;
        } else {
            const char escape = ++i < raw->size() ? (*raw)[i] : '\0';
            const auto character = escape == ';' ? std::optional(';') : unescaped(escape);
            if (!character) {
                return std::nullopt;
            }
            piece += *character;
        }
    }
    if (!piece.empty()) {
        list.push_back(std::move(piece));
    }
    return list;
}

bool isTrue(const RawValue& raw) {
    if (!raw) {
        return false;
    }
    const std::string_view word = withoutTrailingBlanks(*raw);
    return word == "true" || word == "1";
}

// The first language's value that can be shown.
std::string localized(const std::vector<RawValue>& translations, const RawValue& plain) {
    for (const RawValue& translation : translations) {
        if (std::string text = stringOf(translation); !text.empty()) {
            return text;
        }
    }
    return stringOf(plain);
}

// One pass over the lines of one file. Keeps where the values stand, copies nothing.
class Scan {
public:
    Scan(std::span<const std::string> languages, std::vector<RawValue>& names,
         std::vector<RawValue>& icons)
        : languages_(languages), names_(names), icons_(icons) {}

    // False when the bytes are no desktop entry.
    bool run(std::string_view bytes);

    [[nodiscard]] const RawValue& value(Key key) const { return values_[key]; }

private:
    bool line(std::string_view line);
    bool group(std::string_view line);
    void keep(const SplitKey& key, std::string_view value);

    // False when a key may not stand here, or announces an encoding that nobody reads.
    bool pair(const SplitKey& key, std::string_view value) {
        if (inEntry_) {
            if (!key.locale && key.name == "Encoding") {
                return value.size() == 5 && g_ascii_strncasecmp(value.data(), "UTF-8", 5) == 0;
            }
            keep(key, value);
        }
        return inAnyGroup_;
    }

    std::span<const std::string> languages_;
    std::vector<RawValue>& names_;
    std::vector<RawValue>& icons_;
    std::array<RawValue, kKeyCount> values_;
    bool inEntry_ = false;
    bool inAnyGroup_ = false;
};

bool Scan::run(std::string_view bytes) {
    // Lines are C strings to GKeyFile: the rest of a line after a NUL does not exist.
    const bool holdsNul = bytes.find('\0') != std::string_view::npos;
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        std::string_view text = bytes.substr(start, end - start);
        if (end == std::string_view::npos) {
            end = bytes.size();
        } else if (!text.empty() && text.back() == '\r') {
            text.remove_suffix(1);
        }
        if (holdsNul) {
            text = text.substr(0, text.find('\0'));
        }
        if (!line(text)) {
            return false;
        }
        start = end + 1;
    }
    return inAnyGroup_;
}

// False when the line spoils the file.
bool Scan::line(std::string_view text) {
    // The usual forms first: KEY=VALUE and KEY[LOCALE]=VALUE without anything unusual.
    const std::size_t nameEnd = skip(text, 0, kInKey);
    if (nameEnd > 0 && nameEnd < text.size()) {
        const std::string_view name = text.substr(0, nameEnd);
        if (text[nameEnd] == '=') {
            return pair({name, std::nullopt}, withoutLeadingBlanks(text.substr(nameEnd + 1)));
        }
        const std::size_t close = skip(text, nameEnd + 1, kInLocale);
        if (text[nameEnd] == '[' && close + 1 < text.size() && text[close] == ']' &&
            text[close + 1] == '=') {
            return pair({name, text.substr(nameEnd + 1, close - nameEnd - 1)},
                        withoutLeadingBlanks(text.substr(close + 2)));
        }
    }

    text = withoutLeadingBlanks(text);
    if (text.empty() || text.front() == '#') {
        return true;
    }
    if (text.front() == '[') {
        return group(text);
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        return false;
    }
    const auto key = splitKey(withoutTrailingBlanks(text.substr(0, equals)));
    return key && pair(*key, withoutLeadingBlanks(text.substr(equals + 1)));
}

bool Scan::group(std::string_view text) {
    const auto name = groupName(text);
    if (!name) {
        return false;
    }
    inEntry_ = *name == "Desktop Entry";
    if (!inAnyGroup_ && !inEntry_) {
        return false;
    }
    inAnyGroup_ = true;
    return true;
}

void Scan::keep(const SplitKey& key, std::string_view value) {
    const auto* const found = std::find(kKeyNames.begin(), kKeyNames.end(), key.name);
    if (found == kKeyNames.end()) {
        return;
    }
    const auto index = static_cast<std::size_t>(found - kKeyNames.begin());
    if (!key.locale) {
        values_[index] = value;
    } else if (index == kName || index == kIcon) {
        const auto language = std::find(languages_.begin(), languages_.end(), *key.locale);
        if (language != languages_.end()) {
            auto& translations = index == kName ? names_ : icons_;
            translations[static_cast<std::size_t>(language - languages_.begin())] = value;
        }
    }
}

}  // namespace

DesktopEntryReader::DesktopEntryReader(std::span<const std::string> languages)
    : languages_(languages.begin(), languages.end()) {}

std::optional<DesktopEntry> DesktopEntryReader::parse(std::string_view bytes) {
    names_.assign(languages_.size(), std::nullopt);
    icons_.assign(languages_.size(), std::nullopt);
    Scan scan(languages_, names_, icons_);
    if (bytes.size() > kLargestDesktopEntry || !scan.run(bytes)) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.type = stringOf(scan.value(kType));
    entry.name = localized(names_, scan.value(kName));
    if (const RawValue& plain = scan.value(kName); entry.name.empty() && plain) {
        entry.name = decoded(repairedUtf8(*plain));
    }
    entry.icon = localized(icons_, scan.value(kIcon));
    entry.exec = stringOf(scan.value(kExec));
    entry.tryExec = stringOf(scan.value(kTryExec));
    entry.path = stringOf(scan.value(kPath));
    entry.startupWmClass = stringOf(scan.value(kStartupWmClass));
    entry.onlyShowIn = listOf(scan.value(kOnlyShowIn));
    entry.notShowIn = listOf(scan.value(kNotShowIn));
    entry.hidden = isTrue(scan.value(kHidden));
    entry.noDisplay = isTrue(scan.value(kNoDisplay));
    entry.terminal = isTrue(scan.value(kTerminal));
    entry.startupNotify = isTrue(scan.value(kStartupNotify));
    entry.dbusActivatable = isTrue(scan.value(kDBusActivatable));
    return entry;
}

std::optional<DesktopEntry> DesktopEntryReader::read(int folder, const char* name) {
    const int file = openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        return std::nullopt;
    }
    struct stat facts {};
    bool whole = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) &&
                 facts.st_size <= static_cast<off_t>(kLargestDesktopEntry);
    std::size_t length = 0;
    if (whole) {
        const auto size = static_cast<std::size_t>(facts.st_size);
        buffer_.resize(std::max(buffer_.size(), size));
        while (length < size) {
            const ssize_t count = ::read(file, buffer_.data() + length, size - length);
            if (count > 0) {
                length += static_cast<std::size_t>(count);
            } else if (count == 0 || errno != EINTR) {
                whole = count == 0;
                break;
            }
        }
    }
    close(file);
    return whole ? parse(std::string_view(buffer_.data(), length)) : std::nullopt;
}

std::optional<DesktopEntry> parseDesktopEntry(std::string_view bytes,
                                              std::span<const std::string> languages) {
    return DesktopEntryReader(languages).parse(bytes);
}

std::optional<DesktopEntry> readDesktopEntry(const std::string& path,
                                             std::span<const std::string> languages) {
    return DesktopEntryReader(languages).read(AT_FDCWD, path.c_str());
}

}  // namespace tavo
