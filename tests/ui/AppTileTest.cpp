#include <QAction>
#include <QImage>
#include <QMenu>
#include <QPainter>

#include <gtest/gtest.h>

#include "ui/AppTile.h"
#include "ui/Appearance.h"

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

TEST(AppTile, the_star_and_the_main_area_do_not_overlap) {
    const QRect area(0, 0, 104, AppTile::height());
    EXPECT_FALSE(AppTile::mainRect(area).intersects(AppTile::starRect(area)));
}

TEST(AppTile, its_menu_offers_the_three_marks_in_order) {
    QMenu menu;
    tile("Note").fillMenu(menu, Appearance(QPalette(Qt::white)));
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
    QMenu menu;
    marked.fillMenu(menu, Appearance(QPalette(Qt::white)));
    EXPECT_EQ(menu.actions().at(0)->text(), QStringLiteral("Mostra nell’elenco"));
    EXPECT_EQ(menu.actions().at(1)->text(), QStringLiteral("Rimuovi dai preferiti"));
}

TEST(AppTile, its_menu_ticks_categories_and_toggles_the_chosen_one) {
    AppTile sorted = tile("Note");
    sorted.categories = {{"a", "Q&A"}, {"b", "B"}};
    sorted.assignedCategoryIDs = {"b"};
    std::vector<std::string> toggled;
    sorted.toggleCategory = [&](const LauncherCategory& category) {
        toggled.push_back(category.id);
    };
    QMenu menu;
    sorted.fillMenu(menu, Appearance(QPalette(Qt::white)));
    const auto entries = menu.actions().at(2)->menu()->actions();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0]->text(), QStringLiteral("Q&&A"));
    EXPECT_TRUE(entries[0]->icon().isNull());
    EXPECT_FALSE(entries[1]->icon().isNull());
    entries[1]->trigger();
    EXPECT_EQ(toggled, std::vector<std::string>{"b"});
}

}  // namespace
}  // namespace tavo
