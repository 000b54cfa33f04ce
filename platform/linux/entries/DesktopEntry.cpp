#include "platform/linux/entries/DesktopEntry.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/posix/FileDescriptor.h"
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
    kSingleMainWindow,
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
                                                               "SingleMainWindow",
                                                               "StartupWMClass"};

using RawValue = std::optional<std::string_view>;

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    std::size_t start = 0;
    while (start < text.size() && g_ascii_isspace(text[start])) {
        ++start;
    }
    return text.substr(start);
}

std::string_view withoutTrailingBlanks(std::string_view text) {
    while (!text.empty() && g_ascii_isspace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// The name in a line "[name]"; absent when the line is no group. `afterNul`: the rest of the line
// from its first NUL on. GLib ignores it but for a "]" in it, which makes the name ill-formed.
std::optional<std::string_view> groupName(std::string_view line, std::string_view afterNul) {
    const std::size_t close = line.find(']');
    if (close == std::string_view::npos || afterNul.find(']') != std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view name = line.substr(1, close - 1);
    const std::string_view rest = line.substr(close + 1);
    const auto isPassedOver = [](char c) { return c == ' ' || c == '\t' || isContinuation(c); };
    const auto isForbidden = [](char c) { return c == '[' || g_ascii_iscntrl(c); };
    if (name.empty() || !std::ranges::all_of(rest, isPassedOver) ||
        std::ranges::any_of(name, isForbidden)) {
        return std::nullopt;
    }
    return name;
}

// Whether the character at the front of `text` may stand in the name of a locale.
bool isInLocale(std::string_view text) {
    const char c = text.front();
    if (static_cast<unsigned char>(c) < 0x80) {
        return g_ascii_isalnum(c) || c == '-' || c == '_' || c == '.' || c == '@';
    }
    const gunichar scalar =
        g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    return scalar <= 0x10ffff && g_unichar_isalnum(scalar) != FALSE;
}

// The end of the locale that starts at `from`. Like GLib, takes stray UTF-8 continuation bytes
// along.
std::size_t localeEnd(std::string_view text, std::size_t from) {
    while (from < text.size() && isInLocale(text.substr(from))) {
        do {
            ++from;
        } while (from < text.size() && isContinuation(text[from]));
    }
    return from;
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

// The text with its escapes replaced. An unknown escape stays as written, a backslash at the end is
// dropped.
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

// The elements of a list, separated by ";". Absent also when the list has an unknown escape.
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

// The first translation that is not empty, else the plain value.
std::string localized(const std::vector<RawValue>& translations, const RawValue& plain) {
    for (const RawValue& translation : translations) {
        if (std::string text = stringOf(translation); !text.empty()) {
            return text;
        }
    }
    return stringOf(plain);
}

// One pass over the lines of one file. The values are views into its bytes.
class Scan {
public:
    explicit Scan(std::span<const std::string> languages)
        : languages_(languages), names_(languages.size()), icons_(languages.size()) {}

    // False when the bytes are no desktop entry.
    bool run(std::string_view bytes);

    [[nodiscard]] const RawValue& value(Key key) const { return values_[key]; }
    [[nodiscard]] std::string localizedName() const { return localized(names_, values_[kName]); }
    [[nodiscard]] std::string localizedIcon() const { return localized(icons_, values_[kIcon]); }

private:
    bool line(std::string_view text, std::string_view afterNul);
    bool group(std::string_view text, std::string_view afterNul);
    bool pair(std::string_view text);
    bool keep(std::string_view key, std::string_view value);
    void keepTranslation(std::string_view key, std::string_view locale, std::string_view value);

    std::span<const std::string> languages_;
    std::vector<RawValue> names_;  // translations, by language
    std::vector<RawValue> icons_;
    std::array<RawValue, kKeyCount> values_;
    bool inEntry_ = false;
    bool inAnyGroup_ = false;
};

bool Scan::run(std::string_view bytes) {
    // GLib reads a line up to its first NUL.
    const bool holdsNul = bytes.find('\0') != std::string_view::npos;
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        std::string_view text = bytes.substr(start, end - start);
        if (end == std::string_view::npos) {
            end = bytes.size();
        } else if (text.ends_with('\r')) {
            text.remove_suffix(1);
        }
        const std::size_t length = holdsNul ? std::min(text.find('\0'), text.size()) : text.size();
        if (!line(text.substr(0, length), text.substr(length))) {
            return false;
        }
        start = end + 1;
    }
    return inAnyGroup_;
}

// This function and those below answer false when the line is ill-formed.
bool Scan::line(std::string_view text, std::string_view afterNul) {
    text = withoutLeadingBlanks(text);
    if (text.empty() || text.front() == '#') {
        return true;
    }
    if (text.front() == '[') {
        return group(text, afterNul);
    }
    return pair(text);
}

// The file's first group must be "Desktop Entry".
bool Scan::group(std::string_view text, std::string_view afterNul) {
    const auto name = groupName(text, afterNul);
    inEntry_ = name == "Desktop Entry";
    inAnyGroup_ = inAnyGroup_ || inEntry_;
    return name && inAnyGroup_;
}

// Reads "KEY=VALUE" or "KEY[LOCALE]=VALUE". Goes over the key once and copies nothing, because most
// of the parser's time is spent here.
bool Scan::pair(std::string_view text) {
    std::size_t end = 0;
    while (end < text.size() && text[end] != '=' && text[end] != '[' && text[end] != ']') {
        ++end;
    }
    std::string_view key = text.substr(0, end);
    std::string_view locale;
    const bool hasLocale = end < text.size() && text[end] == '[';
    if (hasLocale) {
        const std::size_t close = localeEnd(text, end + 1);
        if (key.ends_with(' ') || close == text.size() || text[close] != ']') {
            return false;
        }
        locale = text.substr(end + 1, close - end - 1);
        end = close + 1;
        while (end < text.size() && g_ascii_isspace(text[end])) {
            ++end;
        }
    } else {
        key = withoutTrailingBlanks(key);
    }
    if (!inAnyGroup_ || key.empty() || end == text.size() || text[end] != '=') {
        return false;
    }
    if (!inEntry_) {
        return true;
    }
    const std::string_view value = withoutLeadingBlanks(text.substr(end + 1));
    if (hasLocale) {
        keepTranslation(key, locale, value);
        return true;
    }
    return keep(key, value);
}

// Keeps the value of a known key. False for an Encoding other than UTF-8, which GLib does not read.
bool Scan::keep(std::string_view key, std::string_view value) {
    if (const auto* const known = std::ranges::find(kKeyNames, key); known != kKeyNames.end()) {
        values_[static_cast<std::size_t>(known - kKeyNames.begin())] = value;
    }
    return key != "Encoding" ||
           (value.size() == 5 && g_ascii_strncasecmp(value.data(), "UTF-8", 5) == 0);
}

void Scan::keepTranslation(std::string_view key, std::string_view locale, std::string_view value) {
    const bool isName = key == kKeyNames[kName];
    if (!isName && key != kKeyNames[kIcon]) {
        return;
    }
    if (const auto language = std::ranges::find(languages_, locale); language != languages_.end()) {
        (isName ? names_ : icons_)[static_cast<std::size_t>(language - languages_.begin())] = value;
    }
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view bytes,
                                              std::span<const std::string> languages) {
    Scan scan(languages);
    if (bytes.size() > kLargestDesktopEntry || !scan.run(bytes)) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.type = stringOf(scan.value(kType));
    entry.name = scan.localizedName();
    if (const RawValue& plain = scan.value(kName); entry.name.empty() && plain) {
        entry.name = decoded(repairedUtf8(*plain));
    }
    entry.icon = scan.localizedIcon();
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
    entry.singleMainWindow = isTrue(scan.value(kSingleMainWindow));
    return entry;
}

std::optional<DesktopEntry> readDesktopEntry(const std::string& path,
                                             std::span<const std::string> languages) {
    return readDesktopEntry(AT_FDCWD, path.c_str(), languages);
}

std::optional<DesktopEntry> readDesktopEntry(int folder, const char* name,
                                             std::span<const std::string> languages) {
    const FileDescriptor file(openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat facts {};
    if (!file.valid() || fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode) ||
        facts.st_size > static_cast<off_t>(kLargestDesktopEntry)) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(facts.st_size), '\0');
    std::size_t length = 0;
    ssize_t count = 0;
    do {
        count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        length += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (length < bytes.size() && (count > 0 || (count < 0 && errno == EINTR)));
    bytes.resize(length);
    return count < 0 ? std::nullopt : parseDesktopEntry(bytes, languages);
}

}  // namespace tavo
