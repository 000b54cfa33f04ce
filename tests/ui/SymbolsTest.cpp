#include <QImage>
#include <QPainter>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "ui/Symbols.h"

namespace tavo {
namespace {

TEST(Symbols, a_category_gets_its_symbol_by_its_exact_name) {
    const std::pair<QStringView, QStringView> rows[] = {
        {u"Tutte", u"square.grid.2x2.fill"},
        {u"Preferite", u"star.fill"},
        {u"Recenti", u"clock.fill"},
        {u"Nascoste", u"eye.slash.fill"},
        {u"Lavoro", u"briefcase.fill"},
        {u"Creatività", u"paintpalette.fill"},
        {u"Utility", u"wrench.and.screwdriver.fill"},
        {u"lavoro", u"folder.fill"},
        {u"Progetti", u"folder.fill"},
        {u"", u"folder.fill"},
    };
    for (const auto& [name, symbol] : rows) {
        EXPECT_EQ(categorySymbol(name), symbol) << name.toString().toStdString();
    }
}

TEST(Symbols, every_symbol_in_use_is_drawn_in_the_colour_asked_for) {
    for (const QStringView name :
         {u"square.grid.2x2.fill", u"star.fill", u"star", u"clock.fill", u"eye", u"eye.slash",
          u"eye.slash.fill", u"briefcase.fill", u"paintpalette.fill",
          u"wrench.and.screwdriver.fill", u"folder.fill", u"magnifyingglass",
          u"text.magnifyingglass", u"arrow.clockwise", u"checkmark", u"xmark"}) {
        for (const qreal scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
            SCOPED_TRACE(name.toString().toStdString() + " at " + std::to_string(scale));
            const QImage image = symbolPixmap(name, Qt::red, 16, scale).toImage();
            ASSERT_EQ(image.width(), qRound(16 * scale));
            int painted = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QColor color = image.pixelColor(x, y);
                    if (color.alpha() > 200) {
                        ++painted;
                        EXPECT_GT(color.red(), 250);
                        EXPECT_EQ(color.blue(), 0);
                    }
                }
            }
            EXPECT_GE(painted, image.width());
        }
    }
}

TEST(Symbols, an_unknown_symbol_draws_nothing) {
    QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QImage before = image;
    QPainter painter(&image);
    drawSymbol(painter, image.rect(), u"no.such.symbol", Qt::black);
    painter.end();
    EXPECT_EQ(image, before);
}

}  // namespace
}  // namespace tavo
