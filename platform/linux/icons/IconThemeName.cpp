#include "platform/linux/icons/IconThemeName.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <string_view>

#include "platform/linux/entries/KeyFile.h"
#include "platform/linux/icons/IconEnvironment.h"
#include "platform/linux/system/FileStamp.h"
#include "platform/linux/x11/XSettings.h"

namespace tavo {
namespace {

bool isInstalled(const IconEnvironment& environment, const std::string& theme) {
    if (theme.empty() || theme.front() == '.' || theme.find('/') != std::string::npos) {
        return false;
    }
    return std::ranges::any_of(environment.iconFolders, [&](const std::string& folder) {
        return fileStamp(folder + "/" + theme + "/index.theme").exists();
    });
}

bool runs(const IconEnvironment& environment, std::string_view desktop) {
    return std::ranges::find(environment.desktops, desktop) != environment.desktops.end();
}

std::string fromXSettings(const IconEnvironment& environment) {
    return xSetting(readXSettings(environment.display), "Net/IconThemeName").value_or("");
}

// The first installed theme that the file `name` names under `key`, in the order of the
// configuration folders.
std::string fromFile(const IconEnvironment& environment, const char* name, const char* group,
                     const char* key) {
    for (const std::string& folder : environment.configFolders) {
        const auto theme = keyFileValue(folder + name, group, key);
        if (theme && isInstalled(environment, *theme)) {
            return *theme;
        }
    }
    return "";
}

std::string fromGtk(const IconEnvironment& environment) {
    for (const char* const name : {"/gtk-4.0/settings.ini", "/gtk-3.0/settings.ini"}) {
        std::string theme = fromFile(environment, name, "Settings", "gtk-icon-theme-name");
        if (!theme.empty()) {
            return theme;
        }
    }
    return "";
}

std::string fromKde(const IconEnvironment& environment) {
    return fromFile(environment, "/kdeglobals", "Icons", "Theme");
}

std::string fromLxqt(const IconEnvironment& environment) {
    return fromFile(environment, "/lxqt/lxqt.conf", "General", "icon_theme");
}

std::string usualTheme(const IconEnvironment& environment) {
    struct Usual {
        std::string_view desktop;
        const char* theme;
    };
    constexpr std::array<Usual, 8> kUsual = {{
        {"KDE", "breeze"},
        {"LXQt", "breeze"},
        {"ubuntu", "Yaru"},
        {"Pantheon", "elementary"},
        {"X-Cinnamon", "Mint-Y"},
        {"XFCE", "elementary-xfce"},
        {"MATE", "mate"},
        {"GNOME", "Adwaita"},
    }};
    for (const Usual& usual : kUsual) {
        if (runs(environment, usual.desktop) && isInstalled(environment, usual.theme)) {
            return usual.theme;
        }
    }
    return fallbackIconTheme(environment);
}

}  // namespace

std::string sessionIconTheme(const IconEnvironment& environment, const std::string& preferred) {
    const auto fromPortal = [&](const IconEnvironment&) { return preferred; };
    using Source = std::function<std::string(const IconEnvironment&)>;
    std::vector<Source> sources = {fromXSettings, fromPortal, fromGtk, fromKde, fromLxqt};
    // Where the user has chosen no theme, KDE shows Breeze, whatever its portal and its X settings
    // name.
    const auto breeze = [](const IconEnvironment&) { return "breeze"; };
    if (runs(environment, "KDE")) {
        sources.insert(sources.begin(), {fromKde, breeze});
    } else if (runs(environment, "LXQt")) {
        sources.insert(sources.begin(), fromLxqt);
    }
    for (const Source& source : sources) {
        if (std::string theme = source(environment); isInstalled(environment, theme)) {
            return theme;
        }
    }
    return usualTheme(environment);
}

std::string fallbackIconTheme(const IconEnvironment& environment) {
    for (const char* const theme : {"Adwaita", "breeze", "Papirus", "Yaru", "elementary", "Mint-Y",
                                    "oxygen", "gnome", "Tango"}) {
        if (isInstalled(environment, theme)) {
            return theme;
        }
    }
    return "hicolor";
}

}  // namespace tavo
