#include "platform/linux/system/XdgFolders.h"

#include <algorithm>
#include <cstdlib>

#include "platform/posix/PosixFileManager.h"

namespace tavo {
namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string withoutTrailingSlashes(std::string folder) {
    while (folder.ends_with('/')) {
        folder.pop_back();
    }
    return folder;
}

// The folder that the variable `name` holds, if that is absolute; else `rest` below the home
// folder. Empty when there is no home folder.
std::string userFolder(const char* name, const std::string& home, const char* rest) {
    if (std::string folder = variable(name); folder.starts_with('/')) {
        return withoutTrailingSlashes(std::move(folder));
    }
    return home.starts_with('/') ? withoutTrailingSlashes(home) + rest : std::string();
}

void addOnce(std::vector<std::string>& folders, std::string folder) {
    folder = withoutTrailingSlashes(std::move(folder));
    if (folder.starts_with('/') && std::ranges::find(folders, folder) == folders.end()) {
        folders.push_back(std::move(folder));
    }
}

// `user`, then the folders listed in the variable `name`, or in `otherwise` where it is unset or
// empty.
std::vector<std::string> searchFolders(const std::string& user, const char* name,
                                       const char* otherwise) {
    std::vector<std::string> folders;
    addOnce(folders, user);
    const std::string list = variable(name);
    for (std::string& folder : splitAtColons(list.empty() ? otherwise : list)) {
        addOnce(folders, std::move(folder));
    }
    return folders;
}

}  // namespace

XdgFolders XdgFolders::fromProcess() {
    const std::string home = makePosixFileManager()->homeDirectory();
    XdgFolders folders;
    folders.home = withoutTrailingSlashes(home);
    folders.dataHome = userFolder("XDG_DATA_HOME", home, "/.local/share");
    folders.cacheHome = userFolder("XDG_CACHE_HOME", home, "/.cache");
    folders.dataDirs =
        searchFolders(folders.dataHome, "XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    if (!folders.dataHome.empty()) {
        addOnce(folders.dataDirs, folders.dataHome + "/flatpak/exports/share");
    }
    addOnce(folders.dataDirs, "/var/lib/flatpak/exports/share");
    addOnce(folders.dataDirs, "/var/lib/snapd/desktop");
    folders.configDirs = searchFolders(userFolder("XDG_CONFIG_HOME", home, "/.config"),
                                       "XDG_CONFIG_DIRS", "/etc/xdg");
    return folders;
}

std::vector<std::string> splitAtColons(std::string_view list) {
    std::vector<std::string> pieces;
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        pieces.emplace_back(list.substr(0, colon));
        if (colon == std::string_view::npos) {
            return pieces;
        }
        list.remove_prefix(colon + 1);
        if (list.empty()) {
            pieces.emplace_back();
        }
    }
    return pieces;
}

}  // namespace tavo
