// What has to be known of a desktop entry before it is started (Desktop Entry Specification 1.5).
//
// GLib answers a start that cannot work either with silence or with success. This reads the entry
// the way GLib does and says what is wrong with it. Any thread.
#pragma once

#include <span>
#include <string>

#include "support/Result.h"

namespace tavo {

// The keys that decide over a start, escapes decoded. Texts are UTF-8; empty ones were missing or
// empty.
struct EntryKeys {
    std::string name;     // in the first of the reader's languages that has one
    std::string icon;     // likewise
    std::string command;  // Exec
    std::string tryExec;
    std::string workingDirectory;  // Path
    bool hidden = false;
    bool terminal = false;
    bool startupNotify = false;
    bool busActivatable = false;  // DBusActivatable, and the file's name is a bus name
};

// `languages`: names of translations, the preferred one first, as in XdgEnvironment.
//
// The entry at `path`, a regular file of at most kLargestDesktopEntry that DesktopEntry's reader
// accepts, of type Application.
Result<EntryKeys> readEntryKeys(const std::string& path,
                                std::span<const std::string> languages = {});

// The bus name by which the entry at `path` would be activated: its file name without ".desktop".
// Empty when that is no well-known bus name.
std::string entryBusName(const std::string& path);

// An entry that has every reason to start.
struct StartableEntry {
    EntryKeys keys;
    std::string program;     // the command's first word; empty without a command
    std::string executable;  // the file it means
};

// Every program that the entry needs is looked for, in the folders of `searchPath` where it is not
// given by its path. Without a command an entry passes only if it can be activated over the bus.
Result<StartableEntry> checkEntry(const std::string& path, const std::string& searchPath,
                                  std::span<const std::string> languages = {});

}  // namespace tavo
