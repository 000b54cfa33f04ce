#include "ui/grid/IconShadow.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "ui/look/Metrics.h"

namespace tavo {
namespace {

constexpr double kShadowOpacity = 0.15;

// One pass of a box blur along the columns of a square picture. Handles all columns of a row
// together, which the compiler vectorizes.
void blurDown(const std::vector<float>& from, std::vector<float>& to, int side, int radius) {
    const float weight = 1.0F / static_cast<float>(2 * radius + 1);
    const auto row = [side](int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(side);
    };
    std::vector<float> sums(static_cast<std::size_t>(side), 0.0F);
    const auto add = [&](int y, float sign) {
        const float* const line = &from[row(y)];
        for (std::size_t x = 0; x < sums.size(); ++x) {
            sums[x] += sign * line[x];
        }
    };
    for (int y = 0; y <= radius && y < side; ++y) {
        add(y, 1);
    }
    for (int y = 0; y < side; ++y) {
        float* const line = &to[row(y)];
        for (std::size_t x = 0; x < sums.size(); ++x) {
            line[x] = sums[x] * weight;
        }
        if (y + radius + 1 < side) {
            add(y + radius + 1, 1);
        }
        if (y - radius >= 0) {
            add(y - radius, -1);
        }
    }
}

void transpose(const std::vector<float>& from, std::vector<float>& to, int side) {
    const auto count = static_cast<std::size_t>(side);
    for (std::size_t y = 0; y < count; ++y) {
        for (std::size_t x = 0; x < count; ++x) {
            to[x * count + y] = from[y * count + x];
        }
    }
}

}  // namespace

int iconMargin() {
    return 2 * metrics::kIconShadowRadius;
}

int iconMarginPixels(double scale) {
    return static_cast<int>(std::lround(iconMargin() * scale));
}

QImage withShadow(const QImage& icon, double scale) {
    const int margin = iconMarginPixels(scale);
    const int side = icon.width() + 2 * margin;
    const auto at = [side](int x, int y) { return static_cast<std::size_t>(y * side + x); };
    const auto area = static_cast<std::size_t>(side * side);

    std::vector<float> alpha(area, 0.0F);
    const int offset = static_cast<int>(std::lround(metrics::kIconShadowOffset * scale));
    for (int y = 0; y < icon.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(icon.constScanLine(y));
        for (int x = 0; x < icon.width(); ++x) {
            alpha[at(x + margin, y + margin + offset)] = static_cast<float>(qAlpha(line[x]));
        }
    }
    // Three box blurs look like a Gaussian blur. Its standard deviation is half the shadow's
    // radius.
    const double deviation = metrics::kIconShadowRadius * scale / 2;
    const int radius = std::max(1, static_cast<int>(std::lround(deviation * 0.94)));
    std::vector<float> other(area);
    for (int direction = 0; direction < 2; ++direction) {
        for (int pass = 0; pass < 3; ++pass) {
            blurDown(alpha, other, side, radius);
            alpha.swap(other);
        }
        transpose(alpha, other, side);
        alpha.swap(other);
    }

    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const float darkness = static_cast<float>(kShadowOpacity) * alpha[at(x, y)];
            line[x] = static_cast<QRgb>(darkness + 0.5F) << 24U;
        }
    }
    QPainter painter(&image);
    painter.drawImage(margin, margin, icon);
    painter.end();
    image.setDevicePixelRatio(scale);
    return image;
}

}  // namespace tavo
