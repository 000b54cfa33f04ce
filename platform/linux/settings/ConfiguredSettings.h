// What the user has chosen on KDE and LXQt, from the files in which they keep it.
#pragma once

#include <string>
#include <vector>

#include "platform/DesktopSettings.h"

namespace tavo {

// Folders are absolute, the most important first, and need not exist.
struct ConfigurationFolders {
    std::vector<std::string> config;    // the user's, then the system's
    std::vector<std::string> data;      // hold "color-schemes" of KDE
    std::vector<std::string> desktops;  // as currentDesktops() has them
    bool wayland = false;               // whether the session is a Wayland one
};

// KDE: kdeglobals, kcmfonts for the size of text, and where that names a colour scheme without its
// colours, the scheme's own file. LXQt: lxqt.conf. Nothing on other desktops, where these files are
// left over from another session. The icon theme is not read. Reads files, so any thread but one
// that paints.
DesktopPreferences configuredSettings(const ConfigurationFolders& folders);

}  // namespace tavo
