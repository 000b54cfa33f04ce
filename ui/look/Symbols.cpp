#include "ui/look/Symbols.h"

#include <QCache>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <array>
#include <cmath>
#include <utility>

#include "ui/look/DevicePixels.h"
#include "ui/look/Resources.h"

namespace tavo {

QPixmap symbolPixmap(QStringView name, const QColor& color, int side, qreal scale) {
    static QCache<QString, QPixmap> rendered(256);
    const QString key =
        QStringLiteral("%1/%2/%3/%4").arg(name).arg(color.rgba()).arg(side).arg(scale);
    if (const QPixmap* const known = rendered.object(key)) {
        return *known;
    }
    const int pixels = static_cast<int>(std::lround(side * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer drawing(resourcePath(QStringLiteral("symbols/%1.svg").arg(name)));
    if (drawing.isValid()) {
        QPainter painter(&image);
        drawing.render(&painter);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
    }
    image.setDevicePixelRatio(scale);
    auto* const pixmap = new QPixmap(QPixmap::fromImage(std::move(image)));
    const QPixmap result = *pixmap;
    rendered.insert(key, pixmap);
    return result;
}

void drawSymbol(QPainter& painter, const QRectF& box, QStringView name, const QColor& color) {
    const qreal scale = painter.device()->devicePixelRatioF();
    const int side = static_cast<int>(std::min(box.width(), box.height()));
    const QPixmap pixmap = symbolPixmap(name, color, side, scale);
    const QPointF corner = box.center() - QPointF(side, side) / 2;
    painter.drawPixmap(onDevicePixels(painter, corner), pixmap);
}

QStringView categorySymbol(QStringView categoryName) {
    static constexpr std::array<std::pair<QStringView, QStringView>, 7> kSymbols = {{
        {u"Tutte", u"square.grid.2x2.fill"},
        {u"Preferite", u"star.fill"},
        {u"Recenti", u"clock.fill"},
        {u"Nascoste", u"eye.slash.fill"},
        {u"Lavoro", u"briefcase.fill"},
        {u"Creatività", u"paintpalette.fill"},
        {u"Utility", u"wrench.and.screwdriver.fill"},
    }};
    for (const auto& [name, symbol] : kSymbols) {
        if (name == categoryName) {
            return symbol;
        }
    }
    return u"folder.fill";
}

}  // namespace tavo
