#include "app/status/StatusSymbol.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <algorithm>

#include "ui/look/Symbols.h"

namespace tavo {
namespace {

constexpr QStringView kSymbol = u"square.grid.3x3";
constexpr QRgb kOnDark = 0xFFF2F2F2;
constexpr QRgb kOnLight = 0xFF303030;
constexpr QRgb kEdge = 0xFF303030;
constexpr int kMiddleGray = 128;
constexpr int kPanelStep = 4;

QImage tinted(QRgb color, int side) {
    return symbolPixmap(kSymbol, QColor::fromRgb(color), side, 1).toImage();
}

QImage edged(int side) {
    const int edge = std::max(1, side / 24);
    const QImage light = tinted(kOnDark, side - 2 * edge);
    const QImage dark = tinted(kEdge, side - 2 * edge);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    for (int dy = 0; dy <= 2 * edge; ++dy) {
        for (int dx = 0; dx <= 2 * edge; ++dx) {
            painter.drawImage(dx, dy, dark);
        }
    }
    painter.drawImage(edge, edge, light);
    return image;
}

// What the screen shows there; null where it cannot be had.
QImage shownAt(const QRect& place) {
    QScreen* const screen = QGuiApplication::screenAt(place.center());
    if (screen == nullptr || place.isEmpty()) {
        return {};
    }
    const QPoint at = place.topLeft() - screen->geometry().topLeft();
    return screen->grabWindow(0, at.x(), at.y(), place.width(), place.height()).toImage();
}

}  // namespace

QImage statusSymbol(Ground ground, int side) {
    switch (ground) {
        case Ground::Light:
            return tinted(kOnLight, side);
        case Ground::Dark:
            return tinted(kOnDark, side);
        case Ground::Unknown:
            break;
    }
    return edged(side);
}

Ground groundOfItem(const QRect& item) {
    const QImage shown = shownAt(item);
    if (shown.isNull()) {
        return Ground::Unknown;
    }
    const int right = shown.width() - 1;
    const int bottom = shown.height() - 1;
    const int sum = qGray(shown.pixel(0, 0)) + qGray(shown.pixel(right, 0)) +
                    qGray(shown.pixel(0, bottom)) + qGray(shown.pixel(right, bottom));
    return sum < 4 * kMiddleGray ? Ground::Dark : Ground::Light;
}

Ground groundOfPanel(const QRect& panel) {
    const QImage shown = shownAt(panel);
    if (shown.isNull()) {
        return Ground::Unknown;
    }
    int dark = 0;
    int light = 0;
    for (int y = 0; y < shown.height(); y += kPanelStep) {
        for (int x = 0; x < shown.width(); x += kPanelStep) {
            ++(qGray(shown.pixel(x, y)) < kMiddleGray ? dark : light);
        }
    }
    return dark > light ? Ground::Dark : Ground::Light;
}

}  // namespace tavo
