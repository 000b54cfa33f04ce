#include <QPainter>

#include <gtest/gtest.h>

#include "app/status/StatusSymbol.h"
#include "ui/look/Contrast.h"

namespace tavo {
namespace {

// How many pixels of the symbol have a contrast of at least 3 with a panel of that colour, as the
// Web Content Accessibility Guidelines ask of symbols.
int legiblePixels(const QImage& symbol, const QColor& panel) {
    QImage shown(symbol.size(), QImage::Format_RGB32);
    shown.fill(panel);
    QPainter(&shown).drawImage(0, 0, symbol);
    int legible = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            legible += contrast(shown.pixelColor(x, y), panel) >= 3 ? 1 : 0;
        }
    }
    return legible;
}

TEST(StatusSymbol, is_legible_on_panels_of_every_gray_in_every_size) {
    for (const int side : kSymbolSides) {
        const QImage symbol = statusSymbol(side);
        EXPECT_EQ(symbol.size(), QSize(side, side));
        for (int gray = 0; gray <= 255; gray += 15) {
            EXPECT_GT(legiblePixels(symbol, QColor(gray, gray, gray)), 2 * side)
                << side << " pixels wide, on gray " << gray;
        }
    }
}

TEST(StatusSymbol, leaves_its_corners_transparent) {
    for (const int side : kSymbolSides) {
        const QImage symbol = statusSymbol(side);
        EXPECT_EQ(qAlpha(symbol.pixel(0, 0)), 0) << side;
        EXPECT_EQ(qAlpha(symbol.pixel(side - 1, side - 1)), 0) << side;
    }
}

}  // namespace
}  // namespace tavo
