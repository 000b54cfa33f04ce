#include <QAccessible>
#include <QMenu>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>
#include <QtTest/QTest>
#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "tests/fakes/FakeIconSource.h"
#include "tests/fakes/ManualMainQueue.h"
#include "tests/ui/ActiveWindow.h"
#include "ui/controls/Hover.h"
#include "ui/grid/IconLoader.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

class TileGridTest : public testing::Test {
protected:
    TileGridTest() {
        QCursor::setPos(790, 590);  // outside of the grid
        grid.onLeaveUp = [this] { ++leftUp; };
        grid.resize(780, 500);
    }

    AppTile makeTile(const AppItem& app) {
        made.push_back(app.name);
        return {.app = app,
                .favorite = favorites.contains(app.name),
                .categories = {},
                .assignedCategoryIDs = {},
                .launch = [this, app] { launched.push_back(app.name); },
                .toggleFavorite =
                    [this, app] {
                        starred.push_back(app.name);
                        favorites.insert(app.name);
                    },
                .toggleCategory = [](const LauncherCategory&) {},
                .toggleHidden = [] {}};
    }

    static std::vector<AppItem> apps(int count) {
        std::vector<AppItem> apps;
        for (int i = 0; i < count; ++i) {
            apps.emplace_back("App " + std::to_string(i), FileUrl{"/" + std::to_string(i)});
        }
        return apps;
    }

    void show(int count) {
        grid.setApps(apps(count));
        grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
        grid.viewport()->repaint();
    }

    int current() const {
        for (int i = 0; i < grid.itemCount(); ++i) {
            if (grid.itemIsSelected(i)) {
                return i;
            }
        }
        return -1;
    }

    // Moves the pointer to the middle of the tile's icon.
    void pointAt(int index) {
        QTest::mouseMove(grid.viewport(), AppTile::iconRect(grid.itemRect(index)).center());
    }
    // The indices of the tiles that show a star.
    std::vector<int> stars() const {
        std::vector<int> shown;
        for (int i = 0; i < grid.itemCount(); ++i) {
            if (grid.itemButton(i)) {
                shown.push_back(i);
            }
        }
        return shown;
    }
    QAccessibleInterface& item(int index) {
        return *QAccessible::queryAccessibleInterface(&grid)->child(index);
    }
    static void act(QAccessibleInterface& interface, const QString& action) {
        interface.actionInterface()->doAction(action);
    }

    std::set<std::string> favorites{"App 1"};
    std::shared_ptr<FakeIconSource> source = std::make_shared<FakeIconSource>();
    ManualMainQueue queue;
    IconLoader icons{source, queue};
    std::vector<std::string> made;
    std::vector<std::string> launched;
    std::vector<std::string> starred;
    int leftUp = 0;
    TileGrid grid{icons, [this](const AppItem& app) { return makeTile(app); }, nullptr};
};

TEST_F(TileGridTest, makes_tiles_only_for_the_rows_in_view_and_one_on_either_side) {
    show(5000);
    EXPECT_GT(made.size(), 0U);
    EXPECT_LE(made.size(), 6U * 6U);
    made.clear();
    grid.verticalScrollBar()->setValue(grid.verticalScrollBar()->maximum());
    grid.viewport()->repaint();
    EXPECT_LE(made.size(), 6U * 6U);
    EXPECT_EQ(made.back(), "App 4999");
}

TEST_F(TileGridTest, a_click_on_icon_or_name_opens_and_a_click_on_the_star_marks) {
    show(10);
    const QRect first = grid.itemRect(0);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, AppTile::iconRect(first).center());
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      QPoint(first.center().x(), AppTile::mainRect(first).bottom() - 2));
    EXPECT_EQ(launched, (std::vector<std::string>{"App 0", "App 0"}));
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      AppTile::starRect(grid.itemRect(1)).center());
    EXPECT_EQ(starred, std::vector<std::string>{"App 1"});
    EXPECT_EQ(launched.size(), 2U);
}

TEST_F(TileGridTest, a_quick_second_click_acts_like_the_first_and_stays_in_the_grid) {
    show(10);
    const QPoint star = AppTile::starRect(grid.itemRect(1)).center();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, star);
    QMouseEvent again(QEvent::MouseButtonDblClick, star, grid.viewport()->mapToGlobal(star),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(grid.viewport(), &again);
    EXPECT_TRUE(again.isAccepted());
    QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, star);
    EXPECT_EQ(starred, (std::vector<std::string>{"App 1", "App 1"}));
}

TEST_F(TileGridTest, a_click_between_tiles_or_a_press_dragged_elsewhere_does_nothing) {
    show(10);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      grid.itemRect(0).topRight() + QPoint(10, 10));
    QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, grid.itemRect(0).center());
    QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, grid.itemRect(1).center());
    EXPECT_TRUE(launched.empty());
}

TEST_F(TileGridTest, a_click_on_a_scrolled_grid_opens_what_stands_there_wherever_the_keyboard_was) {
    show(600);
    QTest::keyClick(&grid, Qt::Key_Home);
    grid.clearFocus();
    grid.verticalScrollBar()->setValue(3000);
    int index = 0;
    while (!grid.viewport()->rect().contains(grid.itemRect(index))) {
        ++index;
    }
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      AppTile::iconRect(grid.itemRect(index)).center());
    EXPECT_EQ(launched, std::vector<std::string>{"App " + std::to_string(index)});
    EXPECT_EQ(grid.verticalScrollBar()->value(), 3000);
    grid.setFocus(Qt::ActiveWindowFocusReason);
    EXPECT_EQ(grid.verticalScrollBar()->value(), 3000);
}

TEST_F(TileGridTest, a_click_survives_a_redraw_between_press_and_release) {
    show(10);
    const QPoint point = AppTile::iconRect(grid.itemRect(3)).center();
    QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, point);
    show(10);
    QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, point);
    EXPECT_EQ(launched, std::vector<std::string>{"App 3"});
}

TEST_F(TileGridTest, shift_f10_opens_the_menu_of_the_keyboards_tile_in_view) {
    show(600);
    QTest::keyClick(&grid, Qt::Key_End);
    grid.verticalScrollBar()->setValue(0);
    QTest::keyClick(&grid, Qt::Key_F10, Qt::ShiftModifier);
    auto* const menu = grid.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    EXPECT_TRUE(grid.viewport()->rect().contains(grid.itemRect(599)));
    menu->close();
}

struct Step {
    const char* name;
    int from;
    Qt::Key key;
    int to;
};

TEST_F(TileGridTest, arrows_move_by_where_the_tiles_stand) {
    show(20);  // rows of six: 0-5, 6-11, 12-17, 18-19
    const Step steps[] = {
        {"right", 0, Qt::Key_Right, 1},
        {"right goes on to the next row", 5, Qt::Key_Right, 6},
        {"right at the end stays", 19, Qt::Key_Right, 19},
        {"left", 7, Qt::Key_Left, 6},
        {"left at the beginning stays", 0, Qt::Key_Left, 0},
        {"down", 3, Qt::Key_Down, 9},
        {"down above a shorter last row goes to its end", 16, Qt::Key_Down, 19},
        {"down in the last row stays", 18, Qt::Key_Down, 18},
        {"up", 9, Qt::Key_Up, 3},
        {"home", 13, Qt::Key_Home, 0},
        {"end", 2, Qt::Key_End, 19},
        {"page down", 1, Qt::Key_PageDown, 19},
        {"page up keeps the column", 19, Qt::Key_PageUp, 1},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        QTest::keyClick(&grid, Qt::Key_Home);
        for (int i = 0; i < step.from; ++i) {
            QTest::keyClick(&grid, Qt::Key_Right);
        }
        ASSERT_EQ(current(), step.from);
        QTest::keyClick(&grid, step.key);
        EXPECT_EQ(current(), step.to);
    }
}

TEST_F(TileGridTest, up_from_the_first_row_leaves_the_grid) {
    show(20);
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Up);
    EXPECT_EQ(leftUp, 1);
}

TEST_F(TileGridTest, return_opens_the_keyboards_tile_and_it_is_scrolled_into_view) {
    show(5000);
    QTest::keyClick(&grid, Qt::Key_End);
    EXPECT_TRUE(grid.viewport()->rect().contains(grid.itemRect(4999)));
    QTest::keyClick(&grid, Qt::Key_Return);
    EXPECT_EQ(launched, std::vector<std::string>{"App 4999"});
}

TEST_F(TileGridTest, the_keyboards_tile_stays_with_its_application) {
    show(20);
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Right);
    grid.setApps({{"App 9", {"/9"}}, {"App 5", {"/5"}}, {"App 1", {"/1"}}});
    EXPECT_EQ(current(), 2);
}

TEST_F(TileGridTest, asks_for_the_icons_in_view_before_it_is_painted) {
    std::vector<AppItem> apps;
    for (int i = 0; i < 1000; ++i) {
        apps.emplace_back("App", FileUrl{"/" + std::to_string(i)});
    }
    grid.setApps(std::move(apps));
    ASSERT_TRUE(source->awaitRequests(6));
    for (const FakeIconSource::Request& request : source->requests()) {
        EXPECT_LT(std::stoi(request.path.substr(1)), 36);
        EXPECT_EQ(request.size, 68);
    }
}

TEST_F(TileGridTest, an_empty_list_shows_nothing_and_takes_every_key_calmly) {
    show(0);
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Return, Qt::Key_End, Qt::Key_PageUp}) {
        QTest::keyClick(&grid, key);
    }
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, QPoint(100, 100));
    EXPECT_TRUE(made.empty());
    EXPECT_TRUE(launched.empty());
}

TEST_F(TileGridTest, a_screen_reader_finds_one_item_for_each_application_in_view_or_not) {
    show(300);
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&grid);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 300);
    QAccessibleInterface* const last = list->child(299);
    EXPECT_EQ(last->role(), QAccessible::ListItem);
    EXPECT_EQ(last->text(QAccessible::Name), QStringLiteral("Apri App 299"));
    EXPECT_TRUE(last->state().offscreen);
    EXPECT_EQ(list->indexOfChild(last), 299);
    last->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(launched, std::vector<std::string>{"App 299"});
}

using Stars = std::vector<int>;

TEST_F(TileGridTest, a_star_is_shown_on_favorites_and_under_the_pointer) {
    show(20);
    EXPECT_EQ(stars(), Stars{1});
    pointAt(8);
    EXPECT_EQ(stars(), (Stars{1, 8}));
    pointAt(9);
    EXPECT_EQ(stars(), (Stars{1, 9}));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(grid.viewport(), &leave);
    EXPECT_EQ(stars(), Stars{1});
}

TEST_F(TileGridTest, an_application_just_marked_under_the_pointer_keeps_its_star) {
    show(20);
    pointAt(8);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      AppTile::starRect(grid.itemRect(8)).center());
    grid.setApps(apps(20));
    EXPECT_EQ(grid.itemButton(8)->name, QStringLiteral("Rimuovi dai preferiti"));
    EXPECT_TRUE(launched.empty());
}

TEST_F(TileGridTest, the_pointer_may_be_over_another_tile_after_the_list_has_changed) {
    show(20);
    pointAt(3);
    std::vector<AppItem> fewer = apps(20);
    fewer.erase(fewer.begin());
    grid.setApps(fewer);
    EXPECT_EQ(stars(), (Stars{0, 3}));
    EXPECT_EQ(grid.itemName(3), QStringLiteral("Apri App 4"));
    grid.setApps({});
    grid.setApps(apps(20));
    EXPECT_EQ(stars(), (Stars{1, 3}));
}

TEST_F(TileGridTest, tiles_scrolled_under_a_resting_pointer_get_the_star_but_not_the_keyboard) {
    show(600);
    pointAt(8);
    grid.setFocus();
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_End);
    EXPECT_EQ(current(), 599);
    const Stars shown = stars();
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_GT(shown[1], 500);
    // Sends what Qt also sends when tiles scroll: a move event for a pointer that has not moved.
    const QPoint resting = grid.viewport()->mapFromGlobal(QCursor::pos());
    QMouseEvent move(QEvent::MouseMove, resting, QCursor::pos(), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(grid.viewport(), &move);
    EXPECT_EQ(current(), 599);
}

TEST_F(TileGridTest, a_pointer_that_moves_takes_the_keyboards_tile_along) {
    show(600);
    activate(grid);
    grid.enter();
    pointAt(8);
    pointAt(9);
    EXPECT_EQ(current(), 9);
    QTest::keyClick(&grid, Qt::Key_Return);
    EXPECT_EQ(launched, std::vector<std::string>{"App 9"});
    // The pointer moves to a tile that is half out of view. The grid does not scroll, so that
    // nothing moves under the pointer.
    grid.verticalScrollBar()->setValue(60);
    pointAt(1);
    pointAt(2);
    EXPECT_EQ(current(), 2);
    EXPECT_EQ(grid.verticalScrollBar()->value(), 60);
}

TEST_F(TileGridTest, while_the_keyboard_is_elsewhere_the_pointer_selects_nothing) {
    show(20);
    grid.clearFocus();
    const int before = current();
    pointAt(8);
    pointAt(9);
    EXPECT_EQ(current(), before);
}

TEST_F(TileGridTest, behind_a_sheet_nothing_is_under_the_pointer_and_all_looks_as_before) {
    show(20);
    grid.clearFocus();
    pointAt(8);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(grid.viewport(), &leave);
    const QImage before = grid.grab().toImage();
    pointAt(8);
    grid.setEnabled(false);
    EXPECT_EQ(stars(), Stars{1});
    EXPECT_EQ(grid.grab().toImage(), before);
    grid.setApps(apps(20));
    EXPECT_EQ(stars(), Stars{1});
    EXPECT_TRUE(item(3).state().disabled);
    act(item(3), QAccessibleActionInterface::pressAction());
    act(item(3), QAccessibleActionInterface::showMenuAction());
    act(*item(1).child(0), QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(launched.empty());
    EXPECT_TRUE(starred.empty());
    EXPECT_EQ(grid.findChild<QMenu*>(), nullptr);
    grid.setEnabled(true);
    refreshHover(grid);  // as a sheet does when it closes
    EXPECT_EQ(stars(), (Stars{1, 8}));
}

TEST_F(TileGridTest, a_hidden_grid_has_nothing_under_the_pointer) {
    show(20);
    pointAt(8);
    grid.hide();
    EXPECT_EQ(stars(), Stars{1});
}

TEST_F(TileGridTest, when_a_menu_closes_the_tile_under_the_pointer_has_its_star_at_once) {
    show(20);
    pointAt(8);
    QContextMenuEvent ask(QContextMenuEvent::Mouse, AppTile::iconRect(grid.itemRect(8)).center(),
                          QCursor::pos());
    QApplication::sendEvent(grid.viewport(), &ask);
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(grid.viewport(), &leave);
    EXPECT_EQ(stars(), Stars{1});
    QCursor::setPos(grid.viewport()->mapToGlobal(AppTile::iconRect(grid.itemRect(10)).center()));
    menu->close();
    QCoreApplication::processEvents();
    EXPECT_EQ(stars(), (Stars{1, 10}));
}

TEST_F(TileGridTest, a_pointer_dragged_out_of_the_grid_is_over_no_tile) {
    grid.resize(780, 300);
    show(600);
    QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, grid.itemRect(0).center());
    QTest::mouseMove(grid.viewport(), QPoint(grid.itemRect(0).center().x(), 340));
    EXPECT_EQ(stars(), Stars{1});
    QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, grid.itemRect(0).center());
    EXPECT_EQ(launched, std::vector<std::string>{"App 0"});
}

TEST_F(TileGridTest, a_held_return_key_opens_once) {
    show(20);
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Return);
    for (int i = 0; i < 5; ++i) {
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true);
        QApplication::sendEvent(&grid, &repeated);
    }
    EXPECT_EQ(launched.size(), 1U);
}

TEST_F(TileGridTest, the_ring_is_seen_only_where_the_keyboard_is) {
    show(20);
    grid.clearFocus();
    const QImage without = grid.grab().toImage();
    activate(grid);
    grid.enter();
    const QImage with = grid.grab().toImage();
    EXPECT_NE(with, without);
    // A click does not move the keyboard focus to the grid.
    grid.clearFocus();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.itemRect(5).center());
    EXPECT_FALSE(grid.hasFocus());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(grid.viewport(), &leave);
    EXPECT_EQ(grid.grab().toImage(), without);
}

TEST_F(TileGridTest, a_screen_reader_gives_an_item_the_keyboard_and_brings_it_into_view) {
    show(600);
    activate(grid);
    EXPECT_TRUE(item(500).state().offscreen);
    act(item(500), QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(item(500).state().focused);
    EXPECT_TRUE(item(500).state().selected);
    EXPECT_FALSE(item(500).state().offscreen);
    EXPECT_TRUE(grid.viewport()->rect().contains(grid.itemRect(500)));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&grid)->focusChild(), &item(500));
}

TEST_F(TileGridTest, a_screen_reader_opens_an_items_menu_and_presses_its_star) {
    show(600);
    act(item(500), QAccessibleActionInterface::showMenuAction());
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(grid.viewport()->rect().contains(grid.itemRect(500)));
    menu->close();
    ASSERT_EQ(item(1).childCount(), 1);
    EXPECT_EQ(item(1).child(0)->text(QAccessible::Name), QStringLiteral("Rimuovi dai preferiti"));
    act(*item(1).child(0), QAccessibleActionInterface::pressAction());
    EXPECT_EQ(starred, std::vector<std::string>{"App 1"});
    EXPECT_TRUE(launched.empty());
}

TEST_F(TileGridTest, a_favourite_is_described_as_one) {
    grid.isFavorite = [this](const AppItem& app) { return favorites.contains(app.name); };
    show(20);
    EXPECT_EQ(item(1).text(QAccessible::Description), QStringLiteral("Preferita"));
    EXPECT_EQ(item(2).text(QAccessible::Description), QString());
}

TEST_F(TileGridTest, an_item_says_its_place_among_all) {
    show(600);
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&grid);
    EXPECT_EQ(list->indexOfChild(&item(500)), 500);
    EXPECT_EQ(item(500).parent()->childCount(), 600);
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    const auto said = item(500)
                          .attributesInterface()
                          ->attributeValue(QAccessible::Attribute::Custom)
                          .value<QHash<QString, QString>>();
    EXPECT_EQ(said.value(QStringLiteral("posinset")), QStringLiteral("501"));
    EXPECT_EQ(said.value(QStringLiteral("setsize")), QStringLiteral("600"));
#endif
}

TEST_F(TileGridTest, a_menu_opened_by_a_key_has_its_first_entry_chosen_and_by_the_pointer_none) {
    show(20);
    grid.enter();
    QTest::keyClick(&grid, Qt::Key_F10, Qt::ShiftModifier);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_FALSE(menu->actions().isEmpty());
    EXPECT_EQ(menu->activeAction(), menu->actions().first());
    menu->close();
    const QPoint place = grid.itemRect(0).center();
    QContextMenuEvent click(QContextMenuEvent::Mouse, place, grid.viewport()->mapToGlobal(place));
    QCoreApplication::sendEvent(grid.viewport(), &click);
    menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->activeAction(), nullptr);
    menu->close();
}

TEST_F(TileGridTest, an_item_stays_the_same_to_a_screen_reader_when_marks_change) {
    show(20);
    QAccessibleInterface* const third = &item(3);
    EXPECT_EQ(third->childCount(), 0);
    favorites.insert("App 3");
    grid.setApps(apps(20));
    EXPECT_EQ(&item(3), third);
    ASSERT_EQ(third->childCount(), 1);
    EXPECT_EQ(third->child(0)->text(QAccessible::Name), QStringLiteral("Rimuovi dai preferiti"));
    std::vector<AppItem> fewer = apps(20);
    fewer.erase(fewer.begin(), fewer.begin() + 2);
    grid.setApps(fewer);
    EXPECT_EQ(&item(1), third);
    EXPECT_EQ(third->text(QAccessible::Name), QStringLiteral("Apri App 3"));
}

TEST_F(TileGridTest, asking_about_thousands_of_items_makes_no_tiles) {
    grid.isFavorite = [this](const AppItem& app) { return favorites.contains(app.name); };
    show(5000);
    made.clear();
    for (int i = 0; i < grid.itemCount(); ++i) {
        item(i).text(QAccessible::Name);
        item(i).childCount();
        item(i).state();
        item(i).rect();
    }
    EXPECT_TRUE(made.empty());
}

TEST_F(TileGridTest, on_the_largest_screens_every_icon_in_view_is_asked_for) {
    grid.resize(3640, 2050);
    show(5000);
    EXPECT_EQ(grid.itemRect(30).left(), grid.itemRect(0).left());
    EXPECT_GT(grid.itemRect(30).top(), grid.itemRect(0).top());
    ASSERT_TRUE(source->awaitRequests(30 * 15));
}

TEST_F(TileGridTest, the_whole_name_is_in_the_tool_tip_as_plain_text) {
    const QString name =
        QStringLiteral("<b>Un nome</b> che è molto più lungo di centododici punti");
    grid.setApps({{name.toStdString(), {"/x"}}});
    grid.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
    const QPoint point = AppTile::iconRect(grid.itemRect(0)).center();
    QHelpEvent help(QEvent::ToolTip, point, grid.viewport()->mapToGlobal(point));
    QApplication::sendEvent(grid.viewport(), &help);
    QTextDocument tip;
    tip.setHtml(QToolTip::text());
    EXPECT_EQ(tip.toPlainText().remove(QChar(0x200B)).replace(u'\n', u' '),
              QStringLiteral("Apri ") + name);
    QToolTip::hideText();
}

TEST_F(TileGridTest, a_tool_tip_is_below_its_tile_and_above_it_where_the_screen_ends) {
    show(20);
    const QRect screen = grid.screen()->geometry();
    for (const int bottom : {screen.top() + grid.height(), screen.bottom() + 2}) {
        grid.move(screen.left(), bottom - grid.height());
        const int index = grid.itemCount() - 1;
        const QRect tile = grid.itemRect(index);
        const QPoint point = AppTile::iconRect(tile).center();
        QHelpEvent help(QEvent::ToolTip, point, grid.viewport()->mapToGlobal(point));
        QApplication::sendEvent(grid.viewport(), &help);
        const QWidgetList windows = QApplication::topLevelWidgets();
        const auto tip = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
            return window->isVisible() && window->inherits("QTipLabel");
        });
        ASSERT_NE(tip, windows.end());
        const QRect place((*tip)->mapToGlobal(QPoint()), (*tip)->size());
        EXPECT_FALSE(place.intersects(tile.translated(grid.viewport()->mapToGlobal(QPoint()))));
        EXPECT_TRUE(screen.contains(place));
    }
    QToolTip::hideText();
}

TEST_F(TileGridTest, names_that_would_be_cut_to_the_same_text_are_cut_in_the_middle) {
    const auto named = [](const char* name) {
        return AppItem(name, FileUrl{std::string("/") + name});
    };
    const std::vector<AppItem> alike = {named("Registratore vocale professionale di Anna"),
                                        named("Registratore vocale professionale di Bruno")};
    const AppItem other = named("Un altro nome troppo lungo per la sua finestrella");
    const auto picture = [this](const std::vector<AppItem>& shown, int index) {
        grid.setApps(shown);
        grid.show();
        const QRect name = AppTile::mainRect(grid.itemRect(index));
        return grid.grab().toImage().copy(name.adjusted(0, metrics::kIconSide + 2, 0, 0));
    };
    const QImage alone = picture({alike[0]}, 0);
    const QImage first = picture({alike[0], alike[1], other}, 0);
    EXPECT_NE(first, alone);
    EXPECT_NE(first, picture({alike[0], alike[1], other}, 1).copy(first.rect()));
    AppTile middle = makeTile(alike[0]);
    EXPECT_TRUE(middle.shownName().endsWith(u'…'));
    middle.cutInTheMiddle();
    EXPECT_TRUE(middle.shownName().endsWith(QStringLiteral("Anna")));
    EXPECT_TRUE(middle.shownName().contains(u'…'));
    // The same name twice cannot be told apart by any cut, and one that is alone is cut as usual.
    EXPECT_EQ(picture({alike[0], alike[0]}, 0), alone);
    EXPECT_EQ(picture({alike[0], other}, 0), alone);
}

TEST_F(TileGridTest, the_keyboards_tile_keeps_its_frame_while_its_menu_and_submenu_are_open) {
    show(20);
    grid.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&grid));
    grid.enter();
    const QImage framed = grid.grab().toImage();
    QTest::keyClick(&grid, Qt::Key_F10, Qt::ShiftModifier);
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    grid.clearFocus();  // as an open submenu does
    ASSERT_FALSE(grid.hasFocus());
    EXPECT_EQ(grid.grab().toImage(), framed);
    menu->close();
    EXPECT_NE(grid.grab().toImage(), framed);
}

TEST_F(TileGridTest, a_font_half_as_wide_again_is_followed_at_once) {
    show(20);
    const QFont before = QApplication::font();
    QFont wide = before;
    wide.setStretch(150);
    wide.setPointSize(before.pointSize() + 8);
    QApplication::setFont(wide);
    QCoreApplication::processEvents();
    EXPECT_EQ(grid.itemRect(0).height(), AppTile::height());
    EXPECT_FALSE(grid.itemRect(0).intersects(grid.itemRect(6)));
    grid.grab();
    QApplication::setFont(before);
    QCoreApplication::processEvents();
    EXPECT_EQ(grid.itemRect(0).height(), AppTile::height());
}

}  // namespace
}  // namespace tavo
