#include "app/status/StatusSymbol.h"

#include <QPainter>
#include <QPixmap>
#include <algorithm>

#include "ui/look/Symbols.h"

namespace tavo {
namespace {

constexpr QStringView kSymbol = u"square.grid.3x3";
constexpr QRgb kFace = 0xFFF2F2F2;
constexpr QRgb kEdge = 0xFF303030;

QImage tinted(QRgb color, int side) {
    return symbolPixmap(kSymbol, QColor::fromRgb(color), side, 1).toImage();
}

}  // namespace

QImage statusSymbol(int side) {
    const int edge = std::max(1, side / 24);
    const QImage light = tinted(kFace, side - 2 * edge);
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

}  // namespace tavo
