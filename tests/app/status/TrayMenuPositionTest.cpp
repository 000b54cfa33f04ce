#include <gtest/gtest.h>

#include "app/status/TrayMenuPosition.h"

namespace tavo {
namespace {

constexpr QRect kScreen(0, 0, 1000, 800);
constexpr QSize kMenu(200, 100);

struct Case {
    const char* name;
    QRect item;
    QRect available;
    QPoint place;
};

class TrayMenuPosition : public testing::TestWithParam<Case> {};

TEST_P(TrayMenuPosition, is_at_the_items_edge_beside_the_panel_and_within_the_screen) {
    const Case& each = GetParam();
    SCOPED_TRACE(each.name);
    EXPECT_EQ(trayMenuPosition(each.item, kMenu, kScreen, each.available), each.place);
}

INSTANTIATE_TEST_SUITE_P(
    Panels, TrayMenuPosition,
    testing::Values(
        Case{"at the top", {500, 4, 24, 24}, {0, 32, 1000, 768}, {500, 28}},
        Case{"at the top, in its corner", {970, 4, 24, 24}, {0, 32, 1000, 768}, {800, 28}},
        Case{"at the bottom", {500, 772, 24, 24}, {0, 0, 1000, 768}, {500, 672}},
        Case{"at the bottom, in its corner", {976, 776, 24, 24}, {0, 0, 1000, 768}, {800, 676}},
        Case{"at the left", {4, 300, 24, 24}, {32, 0, 968, 800}, {28, 300}},
        Case{"at the left, in its corner", {4, 772, 24, 24}, {32, 0, 968, 800}, {28, 700}},
        Case{"at the right", {972, 300, 24, 24}, {0, 0, 968, 800}, {772, 300}},
        Case{"unknown, above", {500, 4, 24, 24}, kScreen, {500, 28}},
        Case{"unknown, below", {500, 772, 24, 24}, kScreen, {500, 672}},
        Case{"item without a place", {}, {0, 32, 1000, 768}, {0, 0}}));

TEST(TrayMenuPosition, of_a_menu_larger_than_the_screen_starts_at_the_screens_corner) {
    EXPECT_EQ(trayMenuPosition({500, 4, 24, 24}, {2000, 2000}, kScreen, {0, 32, 1000, 768}),
              QPoint(0, 0));
}

TEST(TrayMenuPosition, of_an_item_of_which_a_point_is_known_is_beside_the_panel_too) {
    struct Panel {
        QPoint click;
        QRect available;
        QPoint place;
    };
    for (const Panel& panel : {Panel{{500, 10}, {0, 32, 1000, 768}, {500, 32}},
                               Panel{{500, 790}, {0, 0, 1000, 768}, {500, 668}},
                               Panel{{10, 300}, {32, 0, 968, 800}, {32, 300}},
                               Panel{{990, 300}, {0, 0, 968, 800}, {768, 300}},
                               Panel{{500, 790}, kScreen, {500, 690}}}) {
        SCOPED_TRACE(testing::Message() << panel.click.x() << ',' << panel.click.y());
        EXPECT_EQ(trayMenuPosition(trayItemAt(panel.click, panel.available), kMenu, kScreen,
                                   panel.available),
                  panel.place);
    }
}

TEST(TrayMenuPosition, counts_on_a_second_screen_from_that_ones_corner) {
    const QRect second(1000, 0, 1000, 800);
    EXPECT_EQ(trayMenuPosition({1980, 776, 20, 20}, kMenu, second, {1000, 0, 1000, 768}),
              QPoint(1800, 676));
}

}  // namespace
}  // namespace tavo
