// What a desktop entry file says, as far as finding, drawing and starting an application needs it
// (Desktop Entry Specification 1.5, freedesktop.org).
//
// The grammar is read exactly as GLib's GKeyFile reads it, so that an entry which this reader
// accepts is one that GIO can start: one ill-formed line anywhere makes the whole file no entry,
// the last of repeated keys holds, a group that comes again goes on, white space around "=" is
// dropped and at the end of a line kept, an unknown escape stays as it is written.
//
// Bad input never fails anything else: it reads as "no entry" or as an absent key.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/entries/KeyFile.h"

namespace tavo {

// A value; strings are UTF-8 with their escapes decoded. A key that is absent, or whose value is
// not UTF-8, is an empty string, no list, or false.
struct DesktopEntry {
    std::string type;  // "Application", "Link", "Directory", or what the file says

    // In the first of the reader's languages that has one, else the plain Name. An empty
    // translation is passed over, and one that is not UTF-8; a plain Name that is not UTF-8 is
    // repaired with U+FFFD. May hold anything else: markup, control characters, any length.
    std::string name;

    std::string icon;  // a name in the icon theme or an absolute path, localized as the name is
    std::string exec;
    std::string tryExec;
    std::string path;            // the working folder of the program
    std::string startupWmClass;  // what its windows call themselves

    // Present and empty differs from absent: the former shows the entry nowhere.
    std::optional<std::vector<std::string>> onlyShowIn;
    std::optional<std::vector<std::string>> notShowIn;

    bool hidden = false;
    bool noDisplay = false;
    bool terminal = false;
    bool startupNotify = false;
    bool dbusActivatable = false;

    bool operator==(const DesktopEntry&) const = default;
};

// A longer file is no entry.
inline constexpr std::size_t kLargestDesktopEntry = kLargestKeyFile;  // bytes

// Reads many entries one after the other with one buffer. One thread at a time.
class DesktopEntryReader {
public:
    // `languages`: names of translations, the preferred one first, as in XdgEnvironment.
    explicit DesktopEntryReader(std::span<const std::string> languages);

    // Absent when `bytes` are not a well-formed key file whose first group is "Desktop Entry".
    // The type is the caller's to check.
    [[nodiscard]] std::optional<DesktopEntry> parse(std::string_view bytes);

    // The file `name`, relative to the open folder `folder` (or AT_FDCWD). Absent also when there
    // is no such regular file that can be read. Never blocks on a FIFO or a device.
    [[nodiscard]] std::optional<DesktopEntry> read(int folder, const char* name);

private:
    std::vector<std::string> languages_;
    std::string buffer_;
    std::vector<std::optional<std::string_view>> names_;  // by language, of the file being read
    std::vector<std::optional<std::string_view>> icons_;
};

// For a single entry.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view bytes,
                                              std::span<const std::string> languages);
std::optional<DesktopEntry> readDesktopEntry(const std::string& path,
                                             std::span<const std::string> languages);

}  // namespace tavo
