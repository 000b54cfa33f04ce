#include "ui/window/WindowShadow.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>

#include "ui/look/Metrics.h"

namespace tavo {
namespace {

using namespace metrics;

constexpr int kOffset = 5;  // the shadow is so much lower than the window
constexpr int kReach = kShadowMargin - kOffset;
constexpr double kOpacity = 0.28;  // next to the shadow's edge
// From the margin's corner to where the shadow's edge is straight.
constexpr int kCorner = kShadowMargin + kWindowRadius + kOffset;

// The length of a corner in device pixels.
int cornerAt(qreal scale) {
    return static_cast<int>(std::ceil(kCorner * scale));
}

// The distance of a point from a rounded rectangle with the centre (0, 0); at most 0 inside.
double distanceFrom(double halfSide, double x, double y) {
    const double toCorner = halfSide - kWindowRadius;
    const double across = std::max(std::abs(x) - toCorner, 0.0);
    const double down = std::max(std::abs(y) - toCorner, 0.0);
    return std::max(std::hypot(across, down) - kWindowRadius, 0.0);
}

QPixmap draw(qreal scale) {
    const int side = 2 * cornerAt(scale) + 1;
    const double centre = side / 2.0;
    const double halfWindow = centre / scale - kShadowMargin;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const double distance = distanceFrom(halfWindow, (x + 0.5 - centre) / scale,
                                                 (y + 0.5 - centre) / scale - kOffset);
            const double strength = std::max(1 - distance / kReach, 0.0);
            line[x] =
                qRgba(0, 0, 0, static_cast<int>(std::lround(255 * kOpacity * strength * strength)));
        }
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    const double left = kShadowMargin * scale;
    painter.drawRoundedRect(QRectF(left, left, side - 2 * left, side - 2 * left),
                            kWindowRadius * scale, kWindowRadius * scale);
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

}  // namespace

void WindowShadow::paint(QPainter& painter, const QRect& window) {
    const qreal scale = painter.device()->devicePixelRatioF();
    const int corner = cornerAt(scale);
    if (picture_.width() != 2 * corner + 1) {
        picture_ = draw(scale);
    }
    const QRectF whole(
        window.adjusted(-kShadowMargin, -kShadowMargin, kShadowMargin, kShadowMargin));
    const qreal length = corner / scale;
    // Where the three columns and the three rows begin and end.
    const std::array<qreal, 4> across = {whole.left(), whole.left() + length,
                                         whole.right() - length, whole.right()};
    const std::array<qreal, 4> down = {whole.top(), whole.top() + length, whole.bottom() - length,
                                       whole.bottom()};
    const std::array<int, 4> source = {0, corner, corner + 1, 2 * corner + 1};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            if (row == 1 && column == 1) {
                continue;  // the window
            }
            painter.drawPixmap(QRectF(QPointF(across[column], down[row]),
                                      QPointF(across[column + 1], down[row + 1])),
                               picture_,
                               QRectF(QPointF(source[column], source[row]),
                                      QPointF(source[column + 1], source[row + 1])));
        }
    }
}

}  // namespace tavo
