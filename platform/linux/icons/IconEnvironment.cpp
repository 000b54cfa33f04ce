#include "platform/linux/icons/IconEnvironment.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/linux/entries/XdgEnvironment.h"
#include "platform/posix/PosixFileManager.h"

namespace tavo {
namespace {

std::vector<std::string> split(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t colon = std::min(list.find(':'), list.size());
        if (colon > 0) {
            parts.emplace_back(list.substr(0, colon));
        }
        list.remove_prefix(std::min(colon + 1, list.size()));
    }
    return parts;
}

// Absolute ones without a trailing slash, each once.
void addFolder(std::vector<std::string>& folders, std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    if (folder.starts_with('/') && std::ranges::find(folders, folder) == folders.end()) {
        folders.push_back(std::move(folder));
    }
}

}  // namespace

IconEnvironment IconEnvironment::fromProcess(bool wayland) {
    const auto variable = [](const char* name) -> std::string {
        if (const char* const value = std::getenv(name); value != nullptr && *value != '\0') {
            return value;
        }
        return std::string_view(name) == "HOME" ? makePosixFileManager()->homeDirectory() : "";
    };
    IconEnvironment environment = fromVariables(variable, wayland);
    environment.languages = messageLanguages();
    return environment;
}

IconEnvironment IconEnvironment::fromVariables(
    const std::function<std::string(const char* name)>& variable, bool wayland) {
    const std::string home = variable("HOME");
    const auto folderOr = [&](const char* name, const std::string& otherwise) {
        const std::string value = variable(name);
        return value.starts_with('/') ? value : home + otherwise;
    };
    const auto listOr = [&](const char* name, const char* otherwise) {
        const std::string value = variable(name);
        return split(value.empty() ? otherwise : value);
    };

    std::vector<std::string> dataFolders;
    const std::string dataHome = folderOr("XDG_DATA_HOME", "/.local/share");
    addFolder(dataFolders, dataHome);
    for (const std::string& folder : listOr("XDG_DATA_DIRS", "/usr/local/share:/usr/share")) {
        addFolder(dataFolders, folder);
    }
    addFolder(dataFolders, dataHome + "/flatpak/exports/share");
    addFolder(dataFolders, "/var/lib/flatpak/exports/share");
    addFolder(dataFolders, "/var/lib/snapd/desktop");

    IconEnvironment environment;
    addFolder(environment.iconFolders, home + "/.icons");
    for (const std::string& folder : dataFolders) {
        addFolder(environment.iconFolders, folder + "/icons");
        addFolder(environment.pixmapFolders, folder + "/pixmaps");
    }
    addFolder(environment.pixmapFolders, "/usr/share/pixmaps");

    addFolder(environment.configFolders, folderOr("XDG_CONFIG_HOME", "/.config"));
    for (const std::string& folder : listOr("XDG_CONFIG_DIRS", "/etc/xdg")) {
        addFolder(environment.configFolders, folder);
    }
    addFolder(environment.configFolders, "/etc");  // where some systems keep GTK's defaults

    const std::string cacheHome = folderOr("XDG_CACHE_HOME", "/.cache");
    if (cacheHome.starts_with('/')) {
        environment.cacheFolder = cacheHome + "/tavolauncher/icons";
    }
    environment.desktops = split(variable("XDG_CURRENT_DESKTOP"));
    if (!wayland) {
        environment.display = variable("DISPLAY");
    }
    return environment;
}

}  // namespace tavo
