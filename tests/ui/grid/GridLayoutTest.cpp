#include <gtest/gtest.h>

#include "ui/grid/GridLayout.h"

namespace tavo {
namespace {

constexpr int kTileHeight = 111;

GridLayout layout(int width, int count) {
    return {.width = width, .tileHeight = kTileHeight, .count = count};
}

struct Row {
    const char* name;
    int width;
    int columns;
    int tileWidth;
};

TEST(GridLayout, fits_as_many_columns_of_100_to_130_as_the_width_allows) {
    const Row rows[] = {
        {"one column, just", 156, 1, 100},
        {"one column never beyond 130", 2 * 28 + 219, 1, 130},
        {"two columns, just", 2 * 28 + 220, 2, 100},
        {"the first window", 780, 6, 104},
        {"the smallest window", 560, 4, 111},
        {"a large screen", 3640, 30, 100},
        {"four thousand pixels, maximised", 3840 - 200, 30, 100},
        {"narrower than one column", 40, 1, 100},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(layout(row.width, 10).columns(), row.columns);
        EXPECT_EQ(layout(row.width, 10).tileWidth(), row.tileWidth);
    }
}

TEST(GridLayout, never_lets_a_column_grow_beyond_130) {
    for (int width = 156; width < 4000; ++width) {
        EXPECT_LE(layout(width, 10).tileWidth(), 130) << width;
        EXPECT_GE(layout(width, 10).tileWidth(), 100) << width;
    }
}

TEST(GridLayout, shows_n_columns_as_soon_as_n_of_100_fit) {
    for (int n = 1; n <= 30; ++n) {
        const int least = 2 * 28 + n * 100 + (n - 1) * 20;
        EXPECT_EQ(layout(least, 100).columns(), n);
        EXPECT_EQ(layout(least, 100).tileWidth(), 100);
        EXPECT_EQ(layout(least + 119, 100).columns(), n);
    }
}

TEST(GridLayout, tiles_stand_20_apart_in_rows_24_apart_28_from_the_edges) {
    const GridLayout grid = layout(780, 8);
    EXPECT_EQ(grid.tile(0), QRect(28, 28, 104, kTileHeight));
    EXPECT_EQ(grid.tile(1), QRect(28 + 124, 28, 104, kTileHeight));
    EXPECT_EQ(grid.tile(6), QRect(28, 28 + kTileHeight + 24, 104, kTileHeight));
    EXPECT_EQ(grid.contentHeight(), 28 + kTileHeight + 24 + kTileHeight + 28);
}

TEST(GridLayout, what_is_left_of_the_width_stands_on_both_sides) {
    const GridLayout grid = layout(2 * 28 + 219, 1);
    EXPECT_EQ(grid.tile(0).left(), (2 * 28 + 219 - 130) / 2);
}

TEST(GridLayout, finds_the_tile_at_a_point_and_none_between) {
    const GridLayout grid = layout(780, 8);
    EXPECT_EQ(grid.tileAt(grid.tile(7).center()), 7);
    EXPECT_EQ(grid.tileAt({28 + 104 + 10, 40}), -1);
    EXPECT_EQ(grid.tileAt({40, 28 + kTileHeight + 10}), -1);
    EXPECT_EQ(grid.tileAt({28 + 3 * 124, 28 + kTileHeight + 30}), -1);
    EXPECT_EQ(grid.tileAt({40, 5}), -1);
    EXPECT_EQ(grid.tileAt({40, 100'000}), -1);
}

TEST(GridLayout, the_rows_near_a_view_are_those_in_it_and_one_on_either_side) {
    const GridLayout grid = layout(780, 6 * 100);
    const int pitch = kTileHeight + 24;
    const auto range = grid.near(28 + 10 * pitch, 28 + 12 * pitch - 1);
    EXPECT_EQ(range, (GridLayout::Range{9 * 6, 13 * 6}));
    EXPECT_EQ(grid.near(0, 1).first, 0);
    EXPECT_EQ(grid.near(grid.contentHeight() - 1, grid.contentHeight()).end, 600);
}

TEST(GridLayout, without_tiles_nothing_is_in_view) {
    EXPECT_EQ(layout(780, 0).near(0, 500), (GridLayout::Range{0, 0}));
    EXPECT_EQ(layout(780, 0).tileAt({100, 100}), -1);
}

}  // namespace
}  // namespace tavo
