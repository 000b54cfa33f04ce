// The part of the session's environment that decides which picture an application has.
#pragma once

#include <string>
#include <vector>

namespace tavo {

// Folders are absolute, the most important first, and need not exist.
struct IconEnvironment {
    std::vector<std::string> iconFolders;    // hold one folder for each icon theme
    std::vector<std::string> pixmapFolders;  // hold single pictures
    std::vector<std::string> configFolders;  // the user's, then the system's
    std::string cacheFolder;                 // for rendered icons; empty: none are kept
    std::string renderer;                    // the path of the icon renderer, a program
    std::vector<std::string> languages;      // for the localized Icon key, the preferred one first
    std::vector<std::string> desktops;       // as currentDesktops() has them
    std::string display;                     // DISPLAY of the X server with XSETTINGS; or empty

    // The environment of this process as it is now, with the folders of the Icon Theme
    // Specification (freedesktop.org). Main thread.
    //
    // `wayland`: whether this is a Wayland session (isWaylandSession). Then `display` is empty,
    // because to connect to DISPLAY would start Xwayland.
    static IconEnvironment fromProcess(bool wayland);
};

}  // namespace tavo
