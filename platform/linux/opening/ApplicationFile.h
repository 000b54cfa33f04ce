// What lies at the path of an application: the folder of a bundle, or the file of a desktop entry
// (Desktop Entry Specification 1.5). Any thread.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/ExecutableLookup.h"
#include "support/Result.h"

namespace tavo {

// Read once for each click; whatever is asked about the application afterwards is answered from
// here.
struct ApplicationFile {
    std::string path;
    std::optional<BundleFacts> bundle;  // set for a bundle only
    DesktopEntry entry;                 // set for an entry only, of type Application
    std::string busName;                // the D-Bus name to activate an entry by; may be empty
};

// `languages`: names of translations, the preferred one first, as in DesktopEntryEnvironment. A
// folder is a bundle, whatever its name. The error says why nothing can be opened at `path`.
Result<ApplicationFile> readApplicationFile(const std::string& path,
                                            std::span<const std::string> languages);

// The program of an application, which exists and can be run.
struct ProgramToStart {
    std::string program;             // as the entry calls it; of a bundle, the path of its file
    std::string executable;          // the path of the program's file
    std::vector<std::string> words;  // the entry's whole command; empty for a bundle
};

// Checks everything else that the start needs (TryExec, Path), too. For an entry without a command,
// the program is empty if the entry can be activated over the session bus, else it is an error.
// `address`: the web address that the entry's command is to open; may be empty.
Result<ProgramToStart> programToStart(const ApplicationFile& file, const ExecutableLookup& lookup,
                                      const std::string& address);

}  // namespace tavo
