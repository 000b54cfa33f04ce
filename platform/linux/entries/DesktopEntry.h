// What a desktop entry file says, as far as finding, drawing and starting an application needs it
// (Desktop Entry Specification 1.5, freedesktop.org). The scan, the icons and a click read an entry
// with these functions alike.
//
// They accept exactly the files that GLib's GKeyFile accepts, so that GIO can start every entry
// that the launcher lists. One ill-formed line anywhere makes the whole file no entry. The last of
// repeated keys holds, and a repeated group continues the first. White space around "=" is dropped,
// at the end of a line it is kept. An unknown escape stays as it is written.
//
// Bad input reads as "no entry" or as an absent key. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/entries/KeyFile.h"

namespace tavo {

// Strings are UTF-8 with their escapes decoded. A key that is absent, or whose value is not UTF-8,
// is an empty string, an absent list, or false.
struct DesktopEntry {
    std::string type;  // "Application", "Link", "Directory", or what the file says

    // The translation for the first of the languages that has one, else the plain Name. A
    // translation that is empty or not UTF-8 is passed over; a plain Name that is not UTF-8 is
    // repaired with U+FFFD. May hold anything else: markup, control characters, any length.
    std::string name;

    std::string icon;  // a name in the icon theme or an absolute path, localized as the name is
    std::string exec;
    std::string tryExec;
    std::string path;            // the working folder of the program
    std::string startupWmClass;  // WM_CLASS or Wayland app id of its windows

    // The desktops that show the entry, and those that do not. An OnlyShowIn that is present and
    // empty shows the entry nowhere.
    std::optional<std::vector<std::string>> onlyShowIn;
    std::optional<std::vector<std::string>> notShowIn;

    bool hidden = false;
    bool noDisplay = false;
    bool terminal = false;
    bool startupNotify = false;
    bool dbusActivatable = false;
    bool singleMainWindow = false;

    bool operator==(const DesktopEntry&) const = default;
};

// The largest file that is read as a desktop entry.
inline constexpr std::size_t kLargestDesktopEntry = kLargestKeyFile;  // bytes

// Absent when `bytes` are not a well-formed key file whose first group is "Desktop Entry". Any type
// of entry is accepted: the caller checks it. `languages`: names of translations, the preferred one
// first, as in DesktopEntryEnvironment.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view bytes,
                                              std::span<const std::string> languages);

// The entry in the file at `path`, or in the file `name` relative to the open folder `folder` (or
// AT_FDCWD). Absent also when there is no such regular file that can be read. Never blocks on a
// FIFO or a device.
std::optional<DesktopEntry> readDesktopEntry(const std::string& path,
                                             std::span<const std::string> languages);
std::optional<DesktopEntry> readDesktopEntry(int folder, const char* name,
                                             std::span<const std::string> languages);

}  // namespace tavo
