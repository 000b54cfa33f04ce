// Tests the files in resources/: the symbols, the logo and the application icon.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <QtTest/QTest>
#include <cmath>

#include <gtest/gtest.h>

#include "support/ApplicationId.h"
#include "ui/look/Resources.h"
#include "ui/look/Symbols.h"
#include "ui/window/ApplicationIcon.h"

namespace tavo {
namespace {

QString readText(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

// The names of the symbols that the program uses. In ui/, they are the string literals in lower
// case; texts for users begin with a capital letter. One symbol, the status item's, is named
// outside ui/.
QStringList symbolsNamedInTheSources() {
    const QRegularExpression literal(QStringLiteral("u\"([a-z0-9]+(?:\\.[a-z0-9]+)*)\""));
    QStringList names = {QStringLiteral("square.grid.3x3")};
    QDirIterator sources(QStringLiteral(TAVO_SOURCE_DIR "/ui"), {QStringLiteral("*.cpp")},
                         QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        const QString text = readText(sources.next());
        for (auto match = literal.globalMatch(text); match.hasNext();) {
            names << match.next().captured(1);
        }
    }
    names.removeDuplicates();
    return names;
}

QStringList symbolFiles() {
    return QDir(resourcePath(QStringLiteral("symbols"))).entryList({QStringLiteral("*.svg")});
}

QImage rendered(const QString& drawing, int side) {
    QSvgRenderer renderer(drawing);
    EXPECT_TRUE(renderer.isValid()) << drawing.toStdString();
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return image;
}

struct Coverage {
    int full = 0;
    int partial = 0;
};

Coverage coverage(const QImage& image) {
    Coverage found;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(image.pixel(x, y));
            found.full += alpha > 245 ? 1 : 0;
            found.partial += alpha > 10 && alpha <= 245 ? 1 : 0;
        }
    }
    return found;
}

TEST(SymbolFiles, each_symbol_named_in_the_code_has_a_file_and_each_file_is_named) {
    QStringList named = symbolsNamedInTheSources();
    QStringList files = symbolFiles();
    files.replaceInStrings(QStringLiteral(".svg"), QString());
    named.sort();
    files.sort();
    EXPECT_EQ(named.join(u'\n').toStdString(), files.join(u'\n').toStdString());
}

TEST(SymbolFiles, all_are_drawn_on_one_grid_with_one_pen) {
    const QRegularExpression width(QStringLiteral("stroke-width=\"([^\"]*)\""));
    for (const QString& file : symbolFiles()) {
        SCOPED_TRACE(file.toStdString());
        const QString text = readText(resourcePath(QStringLiteral("symbols/") + file));
        EXPECT_TRUE(
            text.contains(QStringLiteral("width=\"16\" height=\"16\" viewBox=\"0 0 16 16\"")));
        for (auto match = width.globalMatch(text); match.hasNext();) {
            EXPECT_EQ(match.next().captured(1).toStdString(), "1.5");
        }
        // Checks that all lines have round ends and round corners.
        EXPECT_EQ(text.count(QStringLiteral("stroke=\"")),
                  text.count(QStringLiteral("stroke-linecap=\"round\"")));
        EXPECT_EQ(text.count(QStringLiteral("stroke=\"")),
                  text.count(QStringLiteral("stroke-linejoin=\"round\"")));
    }
}

TEST(SymbolFiles, nothing_reaches_beyond_the_margin_of_one) {
    for (const QString& file : symbolFiles()) {
        SCOPED_TRACE(file.toStdString());
        const QImage image = rendered(resourcePath(QStringLiteral("symbols/") + file), 160);
        for (int at = 0; at < 160; ++at) {
            for (const int outside : {0, 8, 151, 159}) {
                EXPECT_EQ(qAlpha(image.pixel(at, outside)), 0);
                EXPECT_EQ(qAlpha(image.pixel(outside, at)), 0);
            }
        }
    }
}

TEST(SymbolFiles, each_is_drawn_and_tinted_at_every_scale) {
    for (QString name : symbolFiles()) {
        name.chop(4);
        for (const qreal scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
            for (const QColor& color :
                 {QColor(Qt::red), QColor(Qt::white), QColor(0, 0, 0), QColor(10, 132, 255)}) {
                SCOPED_TRACE(name.toStdString() + " at " + std::to_string(scale));
                const QImage image = symbolPixmap(name, color, 16, scale).toImage();
                ASSERT_EQ(image.width(), qRound(16 * scale));
                ASSERT_EQ(image.height(), qRound(16 * scale));
                const Coverage painted = coverage(image);
                EXPECT_GE(painted.full + painted.partial / 2, 12 * scale * scale);
                for (int y = 0; y < image.height(); ++y) {
                    for (int x = 0; x < image.width(); ++x) {
                        const QColor pixel = image.pixelColor(x, y);
                        if (pixel.alpha() > 245) {
                            EXPECT_LE(std::abs(pixel.red() - color.red()), 4);
                            EXPECT_LE(std::abs(pixel.green() - color.green()), 4);
                            EXPECT_LE(std::abs(pixel.blue() - color.blue()), 4);
                        }
                    }
                }
            }
        }
    }
}

// Straight edges along the grid are on whole pixels, so that they are not blurred.
TEST(SymbolFiles, straight_edges_are_sharp_at_scales_one_and_two) {
    struct Row {
        const char* symbol;
        QPoint inside;   // a cell inside the edge, in sixteenths of the drawing; must be opaque
        QPoint outside;  // the cell outside the edge; must be transparent
    };
    const Row rows[] = {
        {"square.grid.2x2.fill", {4, 6}, {4, 7}},
        {"square.grid.2x2.fill", {9, 4}, {8, 4}},
        {"square.grid.3x3", {3, 4}, {3, 5}},
        {"square.grid.3x3", {6, 8}, {5, 8}},
        {"briefcase.fill", {8, 8}, {8, 9}},
        {"briefcase.fill", {8, 10}, {8, 9}},
        {"briefcase.fill", {1, 8}, {0, 8}},
        {"folder.fill", {10, 5}, {10, 4}},
        {"folder.fill", {8, 12}, {8, 13}},
        {"slider.horizontal.3", {12, 3}, {12, 4}},
        {"slider.horizontal.3", {4, 8}, {4, 9}},
        {"slider.horizontal.3", {12, 13}, {12, 14}},
        {"text.magnifyingglass", {6, 3}, {6, 4}},
        {"text.magnifyingglass", {3, 7}, {3, 8}},
        {"text.magnifyingglass", {3, 11}, {3, 12}},
        {"trash", {4, 4}, {4, 3}},
        {"trash", {2, 9}, {1, 9}},
        {"trash", {13, 9}, {14, 9}},
        {"trash", {8, 14}, {8, 15}},
    };
    for (const Row& row : rows) {
        for (const int scale : {1, 2}) {
            SCOPED_TRACE(std::string(row.symbol) + " at " + std::to_string(scale));
            const QImage image = rendered(
                resourcePath(QStringLiteral("symbols/%1.svg").arg(QLatin1String(row.symbol))),
                16 * scale);
            const QPoint step = row.outside - row.inside;
            // The device pixel of a cell that touches the edge.
            const auto nearEdge = [&](const QPoint& cell, const QPoint& towardsEdge) {
                return QPoint(cell.x() * scale + (towardsEdge.x() > 0 ? scale - 1 : 0),
                              cell.y() * scale + (towardsEdge.y() > 0 ? scale - 1 : 0));
            };
            EXPECT_GT(qAlpha(image.pixel(nearEdge(row.inside, step))), 250);
            EXPECT_LT(qAlpha(image.pixel(nearEdge(row.outside, -step))), 5);
        }
    }
}

TEST(IconFiles, every_size_is_there_and_is_what_its_drawing_shows) {
    const QString icon = QLatin1String(kApplicationId);
    const QString any = resourcePath(QStringLiteral("icons/%1.svg").arg(icon));
    struct Row {
        QString picture;
        QString drawing;
        int side;
    };
    QList<Row> rows = {{resourcePath(QStringLiteral("TavoLauncherMark.png")),
                        resourcePath(QStringLiteral("TavoLauncherMark.svg")), 136}};
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const QString own = resourcePath(QStringLiteral("icons/%1/%2").arg(side).arg(icon));
        const QString drawing = own + QStringLiteral(".svg");
        rows << Row{own + QStringLiteral(".png"), QFile::exists(drawing) ? drawing : any, side};
    }
    for (const Row& row : rows) {
        SCOPED_TRACE(row.picture.toStdString());
        const QImage picture =
            QImage(row.picture).convertToFormat(QImage::Format_ARGB32_Premultiplied);
        ASSERT_EQ(picture.size(), QSize(row.side, row.side));
        const QImage wanted = rendered(row.drawing, row.side);
        int different = 0;
        for (int y = 0; y < row.side; ++y) {
            for (int x = 0; x < row.side; ++x) {
                const QRgb a = picture.pixel(x, y);
                const QRgb b = wanted.pixel(x, y);
                // The tolerance is for other versions of the SVG renderer, which may round
                // differently.
                different += std::abs(qAlpha(a) - qAlpha(b)) > 12 ||
                                     std::abs(qRed(a) - qRed(b)) > 12 ||
                                     std::abs(qGreen(a) - qGreen(b)) > 12 ||
                                     std::abs(qBlue(a) - qBlue(b)) > 12
                                 ? 1
                                 : 0;
            }
        }
        EXPECT_LE(different, row.side * row.side / 100) << "run tools/draw_icons.sh";
    }
}

TEST(IconFiles, the_tiles_of_the_small_icons_have_sharp_edges) {
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        SCOPED_TRACE(side);
        const QImage image(resourcePath(
            QStringLiteral("icons/%1/%2.png").arg(side).arg(QLatin1String(kApplicationId))));
        // Looks at one line of pixels, through the middle of the first row of tiles in the drawing:
        // each pixel is either background or tile.
        int row = 0;
        while (row < side && image.pixelColor(side / 2, row).red() < 235) {
            ++row;
        }
        ASSERT_LT(row, side);
        int below = row;
        while (image.pixelColor(side / 2, below).red() > 235) {
            ++below;
        }
        row = (row + below - 1) / 2;
        int tiles = 0;
        bool white = false;
        for (int x = side / 8; x < side - side / 8; ++x) {
            const int red = image.pixelColor(x, row).red();
            EXPECT_TRUE(red > 235 || red < 130) << "at " << x << ": " << red;
            tiles += red > 235 && !white ? 1 : 0;
            white = red > 235;
        }
        EXPECT_EQ(tiles, 3);
    }
}

TEST(IconFiles, the_window_gets_each_size_that_lists_of_windows_use) {
    QList<QSize> sizes = applicationIcon().availableSizes();
    std::sort(sizes.begin(), sizes.end(),
              [](const QSize& a, const QSize& b) { return a.width() < b.width(); });
    EXPECT_EQ(sizes, (QList<QSize>{
                         {16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}, {128, 128}}));
}

TEST(IconFiles, no_window_waits_for_the_icon_until_it_was_painted) {
    QGuiApplication::setWindowIcon({});
    QWidget window;
    useApplicationIconAfterFirstFrame(window);
    window.show();
    EXPECT_TRUE(QGuiApplication::windowIcon().isNull());
    EXPECT_TRUE(QTest::qWaitFor([] { return !QGuiApplication::windowIcon().isNull(); }));
    QGuiApplication::setWindowIcon({});
}

}  // namespace
}  // namespace tavo
