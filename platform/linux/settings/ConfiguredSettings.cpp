#include "platform/linux/settings/ConfiguredSettings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include "platform/linux/entries/KeyFile.h"
#include "platform/linux/settings/SettingValues.h"

namespace tavo {
namespace {

struct Key {
    const char* group;
    const char* name;
};

// Where a desktop keeps what both of them have.
struct Places {
    const char* file;
    Key font;  // as QFont::toString() has it: the family is before the first comma
    Key doubleClickTime;
    Key cursorBlinkTime;
    Key wheelLines;
    Key window;  // the colour of windows
    Key accent;  // the colour of what is selected
};

constexpr Places kKde = {.file = "/kdeglobals",
                         .font = {"General", "font"},
                         .doubleClickTime = {"KDE", "DoubleClickInterval"},
                         .cursorBlinkTime = {"KDE", "CursorBlinkRate"},
                         .wheelLines = {"KDE", "WheelScrollLines"},
                         .window = {"Colors:Window", "BackgroundNormal"},
                         .accent = {"Colors:Selection", "BackgroundNormal"}};
constexpr Places kLxqt = {.file = "/lxqt/lxqt.conf",
                          .font = {"Qt", "font"},
                          .doubleClickTime = {"Qt", "doubleClickInterval"},
                          .cursorBlinkTime = {"Qt", "cursorFlashTime"},
                          .wheelLines = {"Qt", "wheelScrollLines"},
                          .window = {"Palette", "window_color"},
                          .accent = {"Palette", "highlight_color"}};

using Value = std::optional<std::string>;

// The value in the first of `folders` whose file has it.
Value valueIn(const std::vector<std::string>& folders, const std::string& file, const Key& key) {
    for (const std::string& folder : folders) {
        if (Value value = keyFileValue(folder + file, key.group, key.name)) {
            return value;
        }
    }
    return std::nullopt;
}

// `format` is the base of a whole number.
template<typename Number = int, typename... Format>
std::optional<Number> numberOf(std::string_view text, Format... format) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, number, format...);
    return failure == std::errc() && stopped == end && !text.empty() ? std::optional(number)
                                                                     : std::nullopt;
}

// "61,174,233", perhaps with an opacity after it, or "#3daee9".
std::optional<std::uint32_t> colorOf(const Value& value) {
    if (!value) {
        return std::nullopt;
    }
    std::string_view rest = *value;
    if (rest.size() == sizeof "#rrggbb" - 1 && rest.front() == '#') {
        return numberOf<std::uint32_t>(rest.substr(1), 16);
    }
    std::array<double, 3> parts = {};
    for (double& part : parts) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        part = numberOf(rest.substr(0, end)).value_or(-1) / 255.0;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return colorOfParts(parts[0], parts[1], parts[2]);
}

// As Appearance judges the window colour of a palette.
ColorScheme schemeOf(std::optional<std::uint32_t> window) {
    if (!window) {
        return ColorScheme::NoPreference;
    }
    const auto [least, most] =
        std::minmax({*window >> 16U & 0xffU, *window >> 8U & 0xffU, *window & 0xffU});
    return (least + most) / 2 < 128 ? ColorScheme::Dark : ColorScheme::Light;
}

std::string familyOf(std::string_view font) {
    if (font.starts_with('"')) {
        font.remove_prefix(1);
    }
    return std::string(font.substr(0, font.find_first_of(",\"")));
}

DesktopPreferences settingsAt(const Places& places, const std::vector<std::string>& folders) {
    const auto at = [&](const Key& key) { return valueIn(folders, places.file, key); };
    const auto number = [&](const Key& key) { return numberOf(at(key).value_or("")); };
    DesktopPreferences told;
    told.colorScheme = schemeOf(colorOf(at(places.window)));
    told.accent = colorOf(at(places.accent));
    told.fontFamilies = familyOf(at(places.font).value_or(""));
    if (const auto time = number(places.doubleClickTime)) {
        told.doubleClickTime = doubleClickTimeOf(*time);
    }
    if (const auto time = number(places.cursorBlinkTime)) {
        told.cursorBlinkTime = cursorBlinkTimeOf(*time != 0, *time);
    }
    constexpr int kMostLines = 100;
    if (const auto lines = number(places.wheelLines); lines && *lines > 0 && *lines <= kMostLines) {
        told.wheelLines = lines;
    }
    return told;
}

// The size of KDE's font against its usual one: "Noto Sans,10,-1,5,50,0,0,0,0,0".
std::optional<double> textScaleOfFont(std::string_view font) {
    constexpr int kUsualPoints = 10;
    font.remove_prefix(std::min(font.find(',') + 1, font.size()));
    const auto points = numberOf<double>(font.substr(0, font.find(',')));
    return points ? textScaleOf(*points / kUsualPoints) : std::nullopt;
}

// The resolution that the user has forced upon fonts; 0 where it is the usual one. On X11 Qt may
// have made it the scale of the screen.
void applyForcedResolution(DesktopPreferences& told, const ConfigurationFolders& folders) {
    const char* const key = folders.wayland ? "forceFontDPIWayland" : "forceFontDPI";
    const auto dots = numberOf(valueIn(folders.config, "/kcmfonts", {"General", key}).value_or(""));
    const auto factor = dots ? screenAndTextScaleOf(*dots) : std::nullopt;
    if (factor && folders.wayland) {
        told.textScale = textScaleOf(told.textScale.value_or(1) * *factor);
    } else {
        told.screenAndTextScale = factor;
    }
}

DesktopPreferences kdeSettings(const ConfigurationFolders& folders) {
    DesktopPreferences told = settingsAt(kKde, folders.config);
    const auto global = [&](const Key& key) { return valueIn(folders.config, kKde.file, key); };
    told.textScale = textScaleOfFont(global(kKde.font).value_or(""));
    applyForcedResolution(told, folders);
    if (!told.accent) {
        told.accent = colorOf(global({"General", "AccentColor"}));
    }
    const std::string scheme = global({"General", "ColorScheme"}).value_or("BreezeLight");
    if (scheme.find('/') == std::string::npos) {
        const std::string file = "/color-schemes/" + scheme + ".colors";
        const auto ofScheme = [&](const Key& key) {
            return colorOf(valueIn(folders.data, file, key));
        };
        fillIn(told,
               {.colorScheme = schemeOf(ofScheme(kKde.window)), .accent = ofScheme(kKde.accent)});
    }
    if (told.fontFamilies.empty()) {
        told.fontFamilies = "Noto Sans";  // what KDE shows where the user has chosen none
    }
    told.reducedMotion = global({"KDE", "AnimationDurationFactor"}) == "0";
    return told;
}

}  // namespace

DesktopPreferences configuredSettings(const ConfigurationFolders& folders) {
    const auto runs = [&](std::string_view desktop) {
        return std::ranges::find(folders.desktops, desktop) != folders.desktops.end();
    };
    return runs("KDE")    ? kdeSettings(folders)
           : runs("LXQt") ? settingsAt(kLxqt, folders.config)
                          : DesktopPreferences();
}

}  // namespace tavo
