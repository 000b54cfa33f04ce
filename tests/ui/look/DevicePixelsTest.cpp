#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "ui/grid/AppTile.h"
#include "ui/grid/IconShadow.h"
#include "ui/look/Appearance.h"
#include "ui/look/DevicePixels.h"
#include "ui/look/Metrics.h"
#include "ui/look/Symbols.h"

namespace tavo {
namespace {

QImage canvas(double scale) {
    QImage image(QSize(300, 300) * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::white);
    return image;
}

TEST(DevicePixels, a_point_goes_to_the_nearest_corner_of_device_pixels) {
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        SCOPED_TRACE(scale);
        QImage image = canvas(scale);
        QPainter painter(&image);
        painter.translate(7, 3);
        for (int position = 0; position < 40; ++position) {
            const QPointF logical(position, position);
            const QPointF device = painter.deviceTransform().map(onDevicePixels(painter, logical));
            EXPECT_NEAR(device.x(), std::round(device.x()), 1e-9);
            EXPECT_NEAR(device.y(), std::round(device.y()), 1e-9);
            EXPECT_LE(std::abs(device.x() - (position + 7) * scale), 0.5 + 1e-9);
        }
    }
}

TEST(DevicePixels, an_icon_is_as_sharp_at_broken_scales_as_at_whole_ones) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        for (int offset = 0; offset < 4; ++offset) {
            SCOPED_TRACE(testing::Message() << "scale " << scale << ", offset " << offset);
            const int side = qRound(metrics::kIconSide * scale);
            QImage icon(side, side, QImage::Format_ARGB32_Premultiplied);
            icon.fill(Qt::red);
            const QImage shadowed = withShadow(icon, scale);
            QImage image = canvas(scale);
            QPainter painter(&image);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            AppTile tile{.app = AppItem("x", {"/x"}),
                         .categories = {},
                         .assignedCategoryIDs = {},
                         .launch = {},
                         .toggleFavorite = {},
                         .toggleCategory = {},
                         .toggleHidden = {}};
            const QRect place(50 + offset, 30 + offset, 104, AppTile::height());
            tile.paint(painter, place,
                       {.appearance = Appearance(QPalette(Qt::white)), .icon = &shadowed});
            painter.end();
            // There must be one square of pure red pixels, of exactly the icon's size.
            QRect red;
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (image.pixel(x, y) == qRgb(255, 0, 0)) {
                        red |= QRect(x, y, 1, 1);
                        ++count;
                    }
                }
            }
            EXPECT_EQ(red.size(), QSize(side, side));
            EXPECT_EQ(count, side * side);
        }
    }
}

TEST(DevicePixels, a_symbol_is_as_crisp_wherever_its_widget_stands) {
    for (const double scale : {1.25, 1.5}) {
        const int side = qRound(16 * scale);
        const auto drawn = [&](int offset) {
            QImage image = canvas(scale);
            QPainter painter(&image);
            painter.translate(offset, offset);
            drawSymbol(painter, QRectF(20, 20, 16, 16), u"folder.fill", Qt::black);
            painter.end();
            const int corner = qRound((20 + offset) * scale);
            return image.copy(corner, corner, side, side);
        };
        for (int offset = 1; offset < 8; ++offset) {
            SCOPED_TRACE(testing::Message() << "scale " << scale << ", offset " << offset);
            EXPECT_EQ(drawn(offset), drawn(0));
        }
    }
}

}  // namespace
}  // namespace tavo
