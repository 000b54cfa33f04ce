#include "platform/linux/settings/SettingValues.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavo {
namespace {

using std::chrono::milliseconds;

// ASCII letters only, as the names of styles have no others.
std::string lowerCaseLetters(std::string_view text) {
    std::string letters;
    for (const char character : text) {
        if (character >= 'A' && character <= 'Z') {
            letters += static_cast<char>(character - 'A' + 'a');
        } else if (character != '-') {
            letters += character;
        }
    }
    return letters;
}

// Whether Pango reads the word after a family as a style: "Bold", "Semi-Condensed".
bool isStyle(std::string_view word) {
    constexpr std::array<std::string_view, 4> kDegrees = {"ultra", "extra", "semi", "demi"};
    constexpr std::array<std::string_view, 14> kStyles = {
        "normal", "roman", "oblique", "italic", "thin",      "light",    "book",
        "medium", "bold",  "heavy",   "black",  "condensed", "expanded", "regular"};
    const std::string letters = lowerCaseLetters(word);
    std::string_view style = letters;
    for (const std::string_view degree : kDegrees) {
        if (style.starts_with(degree)) {
            style.remove_prefix(degree.size());
            break;
        }
    }
    return letters == "smallcaps" || std::ranges::find(kStyles, style) != kStyles.end();
}

bool isSize(std::string_view word) {
    if (word.ends_with("px")) {
        word.remove_suffix(2);
    }
    return !word.empty() && word.find_first_not_of("0123456789.") == std::string_view::npos;
}

// Removes the last word, with the blanks before it, and returns it.
std::string_view takeLastWord(std::string_view& text) {
    const std::size_t before = text.find_last_of(' ');
    const std::string_view word = text.substr(before == std::string_view::npos ? 0 : before + 1);
    text.remove_suffix(word.size());
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return word;
}

std::optional<milliseconds> between(milliseconds least, std::int64_t time, milliseconds most) {
    const milliseconds told(time);
    return told < least || told > most ? std::nullopt : std::optional(told);
}

}  // namespace

void fillIn(DesktopPreferences& preferences, const DesktopPreferences& others) {
    const auto fill = [&](auto DesktopPreferences::*member) {
        if (preferences.*member == DesktopPreferences().*member) {
            preferences.*member = others.*member;
        }
    };
    fill(&DesktopPreferences::colorScheme);
    fill(&DesktopPreferences::reducedMotion);
    fill(&DesktopPreferences::iconTheme);
    fill(&DesktopPreferences::accent);
    fill(&DesktopPreferences::fontFamilies);
    fill(&DesktopPreferences::doubleClickTime);
    fill(&DesktopPreferences::doubleClickDistance);
    fill(&DesktopPreferences::cursorBlinkTime);
    fill(&DesktopPreferences::wheelLines);
    fill(&DesktopPreferences::textScale);
    fill(&DesktopPreferences::screenAndTextScale);
    fill(&DesktopPreferences::moreContrast);
}

std::string familiesOfPangoFont(std::string_view font) {
    std::string_view families = font.substr(0, font.find_last_not_of(' ') + 1);
    const auto dropLastWordIf = [&families](const auto& is) {
        std::string_view rest = families;
        const bool dropped = is(takeLastWord(rest));
        families = dropped ? rest : families;
        return dropped;
    };
    dropLastWordIf(isSize);
    // A comma ends the families where the last one is called like a style.
    while (dropLastWordIf(isStyle)) {
    }
    while (families.ends_with(',') || families.ends_with(' ')) {
        families.remove_suffix(1);
    }
    return std::string(families.substr(std::min(families.find_first_not_of(' '), families.size())));
}

bool isDarkTheme(std::string_view name) {
    constexpr std::string_view kSeparators = "-_: ";
    for (std::size_t start = 0; start < name.size();) {
        const std::size_t end = std::min(name.find_first_of(kSeparators, start), name.size());
        if (lowerCaseLetters(name.substr(start, end - start)) == "dark") {
            return true;
        }
        start = end + 1;
    }
    return name == "HighContrastInverse";
}

std::optional<std::uint32_t> colorOfParts(double red, double green, double blue) {
    std::uint32_t color = 0;
    for (const double part : {red, green, blue}) {
        if (!(part >= 0 && part <= 1)) {  // true for no number, too
            return std::nullopt;
        }
        constexpr double kMost = 255;
        color = color << 8U | static_cast<std::uint32_t>(std::lround(part * kMost));
    }
    return color;
}

std::optional<double> textScaleOf(double factor) {
    return factor >= 0.5 && factor <= 3 ? std::optional(factor) : std::nullopt;
}

std::optional<double> screenAndTextScaleOf(double dotsPerInch) {
    constexpr double kUsual = 96;
    const double factor = dotsPerInch / kUsual;
    return factor >= 0.5 && factor <= 8 ? std::optional(factor) : std::nullopt;
}

std::optional<milliseconds> doubleClickTimeOf(std::int64_t time) {
    return between(milliseconds(50), time, milliseconds(5000));
}

std::optional<milliseconds> cursorBlinkTimeOf(bool blinks, std::int64_t time) {
    return blinks ? between(milliseconds(100), time, milliseconds(10'000)) : milliseconds(0);
}

}  // namespace tavo
