#include <QAction>
#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "ui/controls/PopupMenu.h"
#include "ui/grid/AppTile.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

AppTile tile(const std::string& name) {
    return {.app = AppItem(name, {"/Applications/" + name + ".app"}),
            .categories = {},
            .assignedCategoryIDs = {},
            .launch = [] {},
            .toggleFavorite = [] {},
            .toggleCategory = [](const LauncherCategory&) {},
            .toggleHidden = [] {}};
}

QStringList titles(const QMenu& menu) {
    QStringList titles;
    for (const QAction* const action : menu.actions()) {
        titles << action->text();
    }
    return titles;
}

QImage painted(const AppTile& tile) {
    QImage image(130, AppTile::height(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    tile.paint(painter, image.rect(), {.appearance = Appearance(QPalette(Qt::white))});
    return image;
}

TEST(AppTile, is_called_apri_and_the_name) {
    EXPECT_EQ(tile("Note").accessibleName(), QStringLiteral("Apri Note"));
    const std::string longName(5000, 'x');
    EXPECT_EQ(tile(longName).accessibleName(), QStringLiteral("Apri ") + QString(5000, u'x'));
}

TEST(AppTile, shows_its_star_for_favorites_and_under_the_pointer) {
    AppTile plain = tile("Note");
    EXPECT_FALSE(plain.showsStar());
    const QImage without = painted(plain);
    plain.hovering = true;
    EXPECT_TRUE(plain.showsStar());
    const QImage hovering = painted(plain);
    AppTile favorite = tile("Note");
    favorite.favorite = true;
    EXPECT_TRUE(favorite.showsStar());
    const QImage filled = painted(favorite);
    EXPECT_EQ(without.size(), filled.size());
    EXPECT_NE(without, hovering);
    EXPECT_NE(without, filled);
    EXPECT_NE(hovering, filled);
}

TEST(AppTile, a_name_is_cut_only_past_its_own_limit_however_narrow_the_column) {
    const QFontMetrics measure(interfaceFont(metrics::kTileName));
    std::string name = "n";
    while (measure.horizontalAdvance(QString::fromStdString(name + "n")) <= metrics::kLargestName) {
        name += "n";
    }
    const Appearance appearance{QPalette(Qt::white)};
    QImage image(200, AppTile::height(), QImage::Format_ARGB32_Premultiplied);
    const auto shown = [&](const std::string& text) {
        image.fill(Qt::white);
        QPainter painter(&image);
        const AppTile narrow = tile(text);
        narrow.paint(painter, QRect(50, 0, metrics::kSmallestColumn, AppTile::height()),
                     {.appearance = appearance});
        return narrow.shownName();
    };
    EXPECT_EQ(shown(name), QString::fromStdString(name));
    EXPECT_TRUE(shown(name + "n").endsWith(u'…'));
}

TEST(AppTile, the_star_of_a_favorite_is_yellow_and_outlined_in_the_light_look_only) {
    AppTile favorite = tile("");
    favorite.favorite = true;
    for (const QColor& window : {QColor(Qt::white), QColor(30, 30, 30)}) {
        const Appearance appearance{QPalette(window)};
        SCOPED_TRACE(appearance.dark ? "dark" : "light");
        QImage image(QSize(130, AppTile::height()) * 4, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(4);
        image.fill(window);
        QPainter painter(&image);
        favorite.paint(painter, QRect(0, 0, 130, AppTile::height()), {.appearance = appearance});
        painter.end();
        int yellow = 0;
        int outline = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                yellow += image.pixelColor(x, y) == appearance.star ? 1 : 0;
                outline += image.pixelColor(x, y) == appearance.starOutline ? 1 : 0;
            }
        }
        EXPECT_GT(yellow, 100);
        EXPECT_EQ(outline > 50, !appearance.dark);
    }
}

TEST(AppTile, a_name_longer_than_its_place_is_cut_to_one_line) {
    AppTile endless = tile("Un nome che non finisce mai e poi mai");
    painted(endless);
    EXPECT_TRUE(endless.shownName().endsWith(u'…'));
    EXPECT_TRUE(endless.shownName().startsWith(QStringLiteral("Un nome")));
    AppTile brief = tile("Note");
    painted(brief);
    EXPECT_EQ(brief.shownName(), QStringLiteral("Note"));
}

struct Name {
    const char* title;
    std::string name;
};

std::string times(int count, const char* text) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

TEST(AppTile, nothing_of_a_hostile_name_reaches_another_tile) {
    const Name names[] = {
        {"ten thousand letters", std::string(10'000, 'W')},
        {"markup", "<h1>grande</h1><img src='x'>&amp;"},
        {"emoji", times(40, "\U0001F468\u200D\U0001F469\u200D\U0001F467")},
        {"right to left", times(30, "مرحبا بالعالم ")},
        {"a turned direction", "abc\u202Egnp.exe\u202C"},
        {"marks piled up", "a" + times(3'000, "\u0301\u0323") + "b"},
        {"marks without a letter", times(500, "\u20DD")},
        {"a very wide sign", times(5, "\uFDFD")},
        {"line breaks", "uno\ndue\r\ntre\u2028quattro"},
        {"a nul", std::string("a\0b", 3)},
        {"controls", "\x01\x02\x1b[31m\x7f"},
        {"no UTF-8", "\xff\xfe\xc3"},
        {"nothing", ""},
    };
    constexpr int kAround = 40;
    // How far a name may extend beyond a narrow tile: half the space beside it.
    constexpr int kOverhang = metrics::kColumnSpacing / 2;
    const QRect place(kAround, kAround, 104, AppTile::height());
    for (const Name& row : names) {
        SCOPED_TRACE(row.title);
        QImage image(104 + 2 * kAround, AppTile::height() + 2 * kAround,
                     QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        AppTile shown = tile("x");
        shown.app.name = row.name;
        shown.paint(painter, place, {.appearance = Appearance(QPalette(Qt::white))});
        painter.end();
        painter.begin(&image);
        painter.fillRect(place.adjusted(-kOverhang, 0, kOverhang, 0), Qt::white);
        painter.end();
        QImage blank = image;
        blank.fill(Qt::white);
        EXPECT_EQ(image, blank);
        const QString name = shown.accessibleName();
        EXPECT_FALSE(name.contains(u'\n'));
        EXPECT_LE(name.size(), 10'010);
    }
}

TEST(AppTile, a_wide_font_cuts_names_sooner_and_overlaps_nothing) {
    const QFont before = QApplication::font();
    AppTile named = tile("Blocco note nuovo");
    painted(named);
    const QString usual = named.shownName();
    QFont wide = before;
    wide.setStretch(150);
    QApplication::setFont(wide);
    AppTile again = tile("Blocco note nuovo");
    painted(again);
    EXPECT_LT(again.shownName().size(), usual.size());
    EXPECT_TRUE(again.shownName().endsWith(u'…'));
    const QRect area(0, 0, 104, AppTile::height());
    EXPECT_FALSE(AppTile::mainRect(area).intersects(AppTile::starRect(area)));
    QApplication::setFont(before);
}

TEST(AppTile, without_its_star_the_place_is_kept_and_empty) {
    AppTile shown = tile("Note");
    const QImage without = painted(shown);
    shown.hovering = true;
    const QImage with = painted(shown);
    const QRect star = AppTile::starRect(without.rect());
    for (int y = 0; y < without.height(); ++y) {
        for (int x = 0; x < without.width(); ++x) {
            if (star.contains(x, y)) {
                EXPECT_EQ(without.pixelColor(x, y), QColor(Qt::white));
            } else {
                EXPECT_EQ(without.pixel(x, y), with.pixel(x, y));
            }
        }
    }
}

TEST(AppTile, the_star_and_the_main_area_do_not_overlap) {
    const QRect area(0, 0, 104, AppTile::height());
    EXPECT_FALSE(AppTile::mainRect(area).intersects(AppTile::starRect(area)));
}

TEST(AppTile, its_menu_offers_the_three_marks_in_order) {
    PopupMenu menu({}, nullptr);
    tile("Note").fillMenu(menu);
    EXPECT_EQ(titles(menu),
              (QStringList{QStringLiteral("Nascondi dall’elenco"),
                           QStringLiteral("Aggiungi ai preferiti"), QStringLiteral("Categorie")}));
    ASSERT_NE(menu.actions().at(2)->menu(), nullptr);
    EXPECT_TRUE(menu.actions().at(2)->menu()->isEmpty());
}

TEST(AppTile, its_menu_speaks_of_what_is_already_marked) {
    AppTile marked = tile("Note");
    marked.hidden = true;
    marked.favorite = true;
    PopupMenu menu({}, nullptr);
    marked.fillMenu(menu);
    EXPECT_EQ(menu.actions().at(0)->text(), QStringLiteral("Mostra nell’elenco"));
    EXPECT_EQ(menu.actions().at(1)->text(), QStringLiteral("Rimuovi dai preferiti"));
}

TEST(AppTile, its_menu_shows_an_outlined_star_also_for_a_favorite) {
    for (const bool marked : {false, true}) {
        SCOPED_TRACE(marked);
        AppTile shown = tile("Note");
        shown.hidden = marked;
        shown.favorite = marked;
        PopupMenu menu({}, nullptr);
        shown.fillMenu(menu);
        EXPECT_EQ(menu.actions().at(0)->icon().name(), marked ? u"eye" : u"eye.slash");
        EXPECT_EQ(menu.actions().at(1)->icon().name(), u"star");
    }
}

TEST(AppTile, its_menu_ticks_categories_and_toggles_the_chosen_one) {
    AppTile sorted = tile("Note");
    sorted.categories = {{"a", "Q&A"}, {"b", "B"}};
    sorted.assignedCategoryIDs = {"b"};
    std::vector<std::string> toggled;
    sorted.toggleCategory = [&](const LauncherCategory& category) {
        toggled.push_back(category.id);
    };
    PopupMenu menu({}, nullptr);
    sorted.fillMenu(menu);
    const auto entries = menu.actions().at(2)->menu()->actions();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0]->text(), QStringLiteral("Q&&A"));
    EXPECT_TRUE(entries[0]->icon().isNull());
    EXPECT_FALSE(entries[0]->isChecked());
    EXPECT_FALSE(entries[1]->icon().isNull());
    EXPECT_TRUE(entries[1]->isChecked());
    entries[1]->trigger();
    EXPECT_EQ(toggled, std::vector<std::string>{"b"});
}

}  // namespace
}  // namespace tavo
