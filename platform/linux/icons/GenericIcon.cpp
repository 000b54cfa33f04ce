#include "platform/linux/icons/GenericIcon.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>

namespace tavo {

IconImage drawGenericIcon(int side) {
    const auto length = static_cast<std::size_t>(side);
    IconImage icon{side, std::vector<std::uint32_t>(length * length, 0)};
    QImage square(reinterpret_cast<uchar*>(icon.pixels.data()), side, side,
                  QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&square);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / 64.0, side / 64.0);
    QLinearGradient grey(0, 4, 0, 60);
    grey.setColorAt(0, QColor(0xb4, 0xb8, 0xbf));
    grey.setColorAt(1, QColor(0x8a, 0x8f, 0x98));
    painter.setPen(Qt::NoPen);
    painter.setBrush(grey);
    painter.drawRoundedRect(QRectF(4, 4, 56, 56), 13, 13);
    painter.setBrush(QColor(255, 255, 255, 217));
    painter.drawRoundedRect(QRectF(16, 18, 32, 28), 4, 4);
    painter.setBrush(QColor(0x8a, 0x8f, 0x98));
    painter.drawRect(QRectF(16, 25, 32, 2));
    painter.end();
    return icon;
}

}  // namespace tavo
