#include "platform/linux/entries/DesktopEntryEnvironment.h"

#include <cstdlib>

#include <glib.h>

#include "platform/linux/system/XdgFolders.h"

namespace tavo {

DesktopEntryEnvironment DesktopEntryEnvironment::fromProcess() {
    const char* const path = std::getenv("PATH");
    return {.dataDirs = XdgFolders::fromProcess().dataDirs,
            .currentDesktops = tavo::currentDesktops(),
            .languages = messageLanguages(),
            .path = path == nullptr ? "/bin:/usr/bin:." : path};
}

std::vector<std::string> currentDesktops() {
    const char* const names = std::getenv("XDG_CURRENT_DESKTOP");
    return splitAtColons(names == nullptr ? "" : names);
}

std::vector<std::string> messageLanguages() {
    std::vector<std::string> languages;
    for (const char* const* language = g_get_language_names(); *language != nullptr; ++language) {
        languages.emplace_back(*language);
    }
    return languages;
}

}  // namespace tavo
