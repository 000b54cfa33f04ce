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

// Read once a click: all that is asked of the application is answered from here.
struct ApplicationFile {
    std::string path;
    std::optional<BundleFacts> bundle;  // of a bundle
    DesktopEntry entry;                 // of an entry, type Application
    std::string busName;                // by which an entry can be activated; empty: by none
};

// `languages`: names of translations, the preferred one first, as in DesktopEntryEnvironment. A
// folder is a bundle, whatever its name. The error says why nothing can be opened at `path`.
Result<ApplicationFile> readApplicationFile(const std::string& path,
                                            std::span<const std::string> languages);

// The program of an application, which is there and would run.
struct ProgramToStart {
    std::string program;             // as the entry calls it; of a bundle, the path of its file
    std::string executable;          // the path of its file
    std::vector<std::string> words;  // the entry's whole command; empty for a bundle
};

// Everything else that the start needs (TryExec, Path) is looked for, too. An entry without a
// command has no program, and an error unless it can be activated over the bus. `address`: what the
// entry's command is to open; may be empty.
Result<ProgramToStart> programToStart(const ApplicationFile& file, const ExecutableLookup& lookup,
                                      const std::string& address);

}  // namespace tavo
