#include <QAccessible>
#include <QMenu>
#include <QScrollBar>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/fakes/FakeIconSource.h"
#include "tests/fakes/ManualMainQueue.h"
#include "ui/IconLoader.h"
#include "ui/TileGrid.h"

namespace tavo {
namespace {

class TileGridTest : public testing::Test {
protected:
    TileGridTest() {
        grid.onLeaveUp = [this] { ++leftUp; };
        grid.resize(780, 500);
    }

    AppTile makeTile(const AppItem& app) {
        made.push_back(app.name);
        return {.app = app,
                .favorite = app.name == "App 1",
                .categories = {},
                .assignedCategoryIDs = {},
                .launch = [this, app] { launched.push_back(app.name); },
                .toggleFavorite = [this, app] { starred.push_back(app.name); },
                .toggleCategory = [](const LauncherCategory&) {},
                .toggleHidden = [] {}};
    }

    void show(int count) {
        std::vector<AppItem> apps;
        for (int i = 0; i < count; ++i) {
            apps.emplace_back("App " + std::to_string(i), FileUrl{"/" + std::to_string(i)});
        }
        grid.setApps(std::move(apps));
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

    FakeIconSource source;
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
    ASSERT_TRUE(source.awaitRequests(6));
    for (const FakeIconSource::Request& request : source.requests()) {
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

}  // namespace
}  // namespace tavo
