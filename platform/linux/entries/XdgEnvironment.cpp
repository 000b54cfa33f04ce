#include "platform/linux/entries/XdgEnvironment.h"

#include <cstdlib>
#include <optional>
#include <string_view>

#include <glib.h>

#include "platform/posix/PosixFileManager.h"

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

// Without its trailing slashes, so that more can follow. Absent when it is not absolute.
std::optional<std::string> usableFolder(std::string folder) {
    if (!folder.starts_with('/')) {
        return std::nullopt;
    }
    while (folder.ends_with('/')) {
        folder.pop_back();
    }
    return folder;
}

// Absent when nothing tells where the user's home is.
std::optional<std::string> userFolder() {
    if (auto folder = usableFolder(variable("XDG_DATA_HOME"))) {
        return folder;
    }
    auto home = usableFolder(makePosixFileManager()->homeDirectory());
    return home ? std::optional(*home + "/.local/share") : std::nullopt;
}

std::vector<std::string> dataFolders() {
    const std::optional<std::string> user = userFolder();
    std::string system = variable("XDG_DATA_DIRS");
    if (system.empty()) {
        system = "/usr/local/share:/usr/share";
    }
    std::vector<std::string> folders;
    if (user) {
        folders.push_back(*user);
    }
    for (std::string& piece : splitAtColons(system)) {
        if (auto folder = usableFolder(std::move(piece))) {
            folders.push_back(std::move(*folder));
        }
    }
    if (user) {
        folders.push_back(*user + "/flatpak/exports/share");
    }
    folders.emplace_back("/var/lib/flatpak/exports/share");
    folders.emplace_back("/var/lib/snapd/desktop");
    return folders;
}

}  // namespace

XdgEnvironment XdgEnvironment::fromProcess() {
    XdgEnvironment environment;
    environment.dataDirs = dataFolders();
    environment.currentDesktops = splitAtColons(variable("XDG_CURRENT_DESKTOP"));
    environment.languages = messageLanguages();
    const char* const path = std::getenv("PATH");
    environment.path = path == nullptr ? "/bin:/usr/bin:." : path;
    return environment;
}

std::vector<std::string> messageLanguages() {
    std::vector<std::string> languages;
    for (const char* const* language = g_get_language_names(); *language != nullptr; ++language) {
        languages.emplace_back(*language);
    }
    return languages;
}

}  // namespace tavo
