#include "ui/look/Contrast.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavo {
namespace {

// The amount of light, 0 to 1, of a channel of sRGB. A table, because contrasts are computed while
// painting.
double light(int channel) {
    static const auto kLight = [] {
        std::array<double, 256> table = {};
        for (std::size_t i = 0; i < table.size(); ++i) {
            const double value = static_cast<double>(i) / 255;
            table[i] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        }
        return table;
    }();
    return kLight[static_cast<std::size_t>(channel)];
}

double luminance(const QColor& color) {
    return 0.2126 * light(color.red()) + 0.7152 * light(color.green()) +
           0.0722 * light(color.blue());
}

QColor mixed(const QColor& from, const QColor& to, int share) {
    const auto channel = [share](int a, int b) { return (a * (255 - share) + b * share) / 255; };
    return {channel(from.red(), to.red()), channel(from.green(), to.green()),
            channel(from.blue(), to.blue())};
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor over(const QColor& color, const QColor& background) {
    return mixed(background, color, color.alpha());
}

QColor legible(const QColor& color, std::initializer_list<QColor> backgrounds, double ratio) {
    const auto reaches = [&](const QColor& tried) {
        return std::ranges::all_of(backgrounds, [&](const QColor& background) {
            return contrast(tried, background) >= ratio;
        });
    };
    // Light backgrounds are those that have less contrast with white than with black.
    const bool onLight = std::ranges::all_of(backgrounds, [](const QColor& background) {
        return contrast(background, Qt::white) < contrast(background, Qt::black);
    });
    const QColor end = onLight ? Qt::black : Qt::white;
    // Tried in steps and not by bisection: the contrast of a colour that is darker than a dark
    // background first falls as the colour gets lighter.
    constexpr int kStep = 3;
    for (int share = 0; share < 255; share += kStep) {
        const QColor tried = mixed(color, end, share);
        if (reaches(tried)) {
            return tried;
        }
    }
    return end;
}

}  // namespace tavo
