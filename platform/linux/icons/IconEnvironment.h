// What of the session decides which picture an application has.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tavo {

// A value; folders are absolute, the most important first, and need not exist.
struct IconEnvironment {
    std::vector<std::string> iconFolders;    // hold one folder a theme
    std::vector<std::string> pixmapFolders;  // hold loose pictures
    std::vector<std::string> configFolders;  // the user's, then the system's
    std::string cacheFolder;                 // for rendered icons; empty: none are kept
    std::vector<std::string> languages;      // of localized Icon keys, the preferred one first
    std::vector<std::string> desktops;       // XDG_CURRENT_DESKTOP, split at ":"
    std::string display;                     // of the X server to ask for its settings; or empty

    // The environment of this process as it is now. `wayland`: whether the session is a Wayland one
    // (isWaylandSession).
    static IconEnvironment fromProcess(bool wayland);

    // The same from other variables, but without languages; `variable` answers "" for one that is
    // not set.
    //
    // Folders are those of the Icon Theme Specification and the XDG Base Directory Specification,
    // then those to which Flatpak and snap export: sessions exist whose XDG_DATA_DIRS lacks them.
    // On Wayland no X server is asked, because the question alone may start one.
    static IconEnvironment fromVariables(
        const std::function<std::string(const char* name)>& variable, bool wayland);
};

}  // namespace tavo
