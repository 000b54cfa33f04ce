// The part of the session's environment that decides which desktop entries are shown and how they
// are named.
#pragma once

#include <string>
#include <vector>

namespace tavo {

// A copy, which later changes of the process's own environment do not affect.
struct DesktopEntryEnvironment {
    std::vector<std::string> dataDirs;         // as in XdgFolders; "applications" is below each
    std::vector<std::string> currentDesktops;  // XDG_CURRENT_DESKTOP, split at ":"
    std::vector<std::string> languages;        // as messageLanguages() has them
    std::string path;                          // PATH

    // The environment of this process as it is now. Main thread.
    static DesktopEntryEnvironment fromProcess();
};

// The desktops in XDG_CURRENT_DESKTOP, the most specific first ("ubuntu", "GNOME"). Main thread.
std::vector<std::string> currentDesktops();

// The user's languages for messages, the preferred one first, each followed by its variants, "C"
// last ("it_IT.UTF-8", "it_IT", "it.UTF-8", "it", "C"). Main thread.
std::vector<std::string> messageLanguages();

}  // namespace tavo
