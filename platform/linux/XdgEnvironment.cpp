#include "platform/linux/XdgEnvironment.h"

#include <cstdlib>
#include <string_view>

#include <pwd.h>
#include <unistd.h>

#include <glib.h>

namespace tavo {
namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::vector<std::string> splitAtColons(std::string_view text) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t colon = text.find(':');
        pieces.emplace_back(text.substr(0, colon));
        if (colon == std::string_view::npos) {
            return pieces;
        }
        text.remove_prefix(colon + 1);
        if (text.empty()) {
            pieces.emplace_back();
        }
    }
    return pieces;
}

void appendFolder(std::vector<std::string>& folders, std::string folder) {
    if (!folder.starts_with('/')) {
        return;
    }
    while (folder.ends_with('/')) {
        folder.pop_back();
    }
    folders.push_back(std::move(folder));
}

std::string homeFolder() {
    if (std::string home = variable("HOME"); home.starts_with('/')) {
        return home;
    }
    const passwd* const user = getpwuid(getuid());
    return user == nullptr ? std::string() : std::string(user->pw_dir);
}

std::vector<std::string> dataFolders() {
    std::string user = variable("XDG_DATA_HOME");
    if (!user.starts_with('/')) {
        user = homeFolder() + "/.local/share";
    }
    std::string system = variable("XDG_DATA_DIRS");
    if (system.empty()) {
        system = "/usr/local/share:/usr/share";
    }
    std::vector<std::string> folders;
    appendFolder(folders, user);
    for (std::string& folder : splitAtColons(system)) {
        appendFolder(folders, std::move(folder));
    }
    appendFolder(folders, user + "/flatpak/exports/share");
    appendFolder(folders, "/var/lib/flatpak/exports/share");
    appendFolder(folders, "/var/lib/snapd/desktop");
    return folders;
}

}  // namespace

XdgEnvironment XdgEnvironment::fromProcess() {
    XdgEnvironment environment;
    environment.dataDirs = dataFolders();
    environment.currentDesktops = splitAtColons(variable("XDG_CURRENT_DESKTOP"));
    for (const char* const* language = g_get_language_names(); *language != nullptr; ++language) {
        environment.languages.emplace_back(*language);
    }
    const char* const path = std::getenv("PATH");
    environment.path = path == nullptr ? "/bin:/usr/bin:." : path;
    return environment;
}

}  // namespace tavo
