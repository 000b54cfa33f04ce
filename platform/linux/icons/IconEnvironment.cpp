#include "platform/linux/icons/IconEnvironment.h"

#include <algorithm>
#include <cstdlib>

#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/system/XdgFolders.h"

namespace tavo {

IconEnvironment IconEnvironment::fromProcess(bool wayland) {
    const XdgFolders folders = XdgFolders::fromProcess();
    IconEnvironment environment;
    if (!folders.home.empty()) {
        environment.iconFolders.push_back(folders.home + "/.icons");
    }
    for (const std::string& folder : folders.dataDirs) {
        environment.iconFolders.push_back(folder + "/icons");
        environment.pixmapFolders.push_back(folder + "/pixmaps");
    }
    if (constexpr char kPixmaps[] = "/usr/share/pixmaps";
        std::ranges::find(environment.pixmapFolders, kPixmaps) == environment.pixmapFolders.end()) {
        environment.pixmapFolders.emplace_back(kPixmaps);
    }
    environment.configFolders = folders.configDirs;
    environment.configFolders.emplace_back("/etc");  // where some systems keep GTK's defaults
    if (!folders.cacheHome.empty()) {
        environment.cacheFolder = folders.cacheHome + "/tavolauncher/icons";
    }
    environment.languages = messageLanguages();
    environment.desktops = currentDesktops();
    if (const char* const display = std::getenv("DISPLAY"); display != nullptr && !wayland) {
        environment.display = display;
    }
    return environment;
}

}  // namespace tavo
