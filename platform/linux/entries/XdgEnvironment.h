// What of the session's environment decides which desktop entries are shown and how they are named.
#pragma once

#include <string>
#include <vector>

namespace tavo {

// A value: whoever has one is independent of the process's own environment.
struct XdgEnvironment {
    // Folders that may hold a folder "applications", the most important first. Absolute, without
    // a trailing slash.
    std::vector<std::string> dataDirs;

    std::vector<std::string> currentDesktops;  // XDG_CURRENT_DESKTOP, split at ":"
    std::vector<std::string> languages;        // of messages, preferred first, with their variants
    std::string path;                          // PATH

    // The environment of this process as it is now. Main thread.
    //
    // Data folders as the XDG Base Directory Specification has them (a relative one is ignored,
    // though GIO would look for it in the working folder; a user without a home has none), then the
    // folders to which Flatpak and snap export entries: sessions exist whose XDG_DATA_DIRS lacks
    // them.
    static XdgEnvironment fromProcess();
};

// Of messages, as the process's environment has them now: the preferred language first, each with
// its variants after it, "C" last.
std::vector<std::string> messageLanguages();

}  // namespace tavo
