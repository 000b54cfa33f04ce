#include "platform/qt/ScaleVariables.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace tavo {
namespace {

constexpr double kLeastFactor = 0.5;
constexpr double kLargestFactor = 8;
constexpr double kUsualResolution = 96;

// The number that all of `text` is.
std::optional<double> numberIn(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

bool isInRange(double factor) {
    return factor >= kLeastFactor && factor <= kLargestFactor;
}

// Whether `text` is a factor, and one that Qt can multiply by `other`, the factor for all screens.
bool isFactor(std::string_view text, double other) {
    const auto factor = numberIn(text);
    return factor && isInRange(*factor) && isInRange(*factor * other);
}

bool isResolution(std::string_view text, double other) {
    const auto dots = numberIn(text);
    return dots && isInRange(*dots / kUsualResolution) &&
           isInRange(*dots / kUsualResolution * other);
}

// "1;1.5", or with the names of screens, "eDP-1=1;HDMI-1=1.5;".
bool areFactors(std::string_view text, double other) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        const std::string_view screen = text.substr(0, end);
        if (!screen.empty() && !isFactor(screen.substr(screen.rfind('=') + 1), other)) {
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
    removeUnless("QT_SCALE_FACTOR", [](std::string_view text) { return isFactor(text, 1); });
    const char* const kept = std::getenv("QT_SCALE_FACTOR");
    const double scale = kept != nullptr ? *numberIn(kept) : 1;
    const auto resolution = [scale](std::string_view text) { return isResolution(text, scale); };
    removeUnless("QT_SCREEN_SCALE_FACTORS",
                 [scale](std::string_view text) { return areFactors(text, scale); });
    removeUnless("QT_FONT_DPI", resolution);
    removeUnless("QT_WAYLAND_FORCE_DPI", resolution);
}

}  // namespace tavo
