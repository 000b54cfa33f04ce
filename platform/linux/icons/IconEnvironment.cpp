#include "platform/linux/icons/IconEnvironment.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/system/FileStamp.h"
#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/system/XdgFolders.h"

namespace tavo {
namespace {

// The path of the icon renderer: beside this program in the build tree, else where it is installed.
std::string rendererPath() {
    const std::string program = processExecutable(::getpid()).value_or("");
    const std::string folder = program.substr(0, program.rfind('/') + 1);
    const std::string beside = folder + "libexec/tavolauncher/icon-renderer";
    return fileStamp(beside).exists() ? beside : folder + TAVO_INSTALLED_LIBEXEC "/icon-renderer";
}

}  // namespace

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
    environment.renderer = rendererPath();
    environment.languages = messageLanguages();
    environment.desktops = currentDesktops();
    if (const char* const display = std::getenv("DISPLAY"); display != nullptr && !wayland) {
        environment.display = display;
    }
    return environment;
}

}  // namespace tavo
