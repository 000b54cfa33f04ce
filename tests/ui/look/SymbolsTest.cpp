#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "ui/look/Symbols.h"

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
