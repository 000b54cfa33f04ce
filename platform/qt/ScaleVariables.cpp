#include "platform/qt/ScaleVariables.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace tavo {
namespace {

constexpr double kLeastFactor = 0.5;
constexpr double kLargestFactor = 8;
constexpr double kUsualResolution = 96;

// Whether all of `text` is a number from `least` to `most`.
bool isNumberBetween(double least, std::string_view text, double most) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && stopped == end && number >= least && number <= most;
}

bool isFactor(std::string_view text) {
    return isNumberBetween(kLeastFactor, text, kLargestFactor);
}

bool isResolution(std::string_view text) {
    return isNumberBetween(kLeastFactor * kUsualResolution, text,
                           kLargestFactor * kUsualResolution);
}

// "1;1.5", or with the names of screens, "eDP-1=1;HDMI-1=1.5;".
bool areFactors(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        const std::string_view screen = text.substr(0, end);
        if (!screen.empty() && !isFactor(screen.substr(screen.rfind('=') + 1))) {
            return false;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

}  // namespace

void removeUnusableScaleVariables() {
    const auto removeUnless = [](const char* name, auto usable) {
        const char* const value = std::getenv(name);
        if (value != nullptr && !usable(value)) {
            ::unsetenv(name);
        }
    };
    removeUnless("QT_SCALE_FACTOR", isFactor);
    removeUnless("QT_SCREEN_SCALE_FACTORS", areFactors);
    removeUnless("QT_FONT_DPI", isResolution);
    removeUnless("QT_WAYLAND_FORCE_DPI", isResolution);
}

}  // namespace tavo
