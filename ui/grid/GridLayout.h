// Computes where the tiles of the grid are.
#pragma once

#include <QPoint>
#include <QRect>

namespace tavo {

// As many columns of 100 to 130, or more where text is larger than usual, as fit with 20 between
// them, centred inside a padding of 28, with 24 between rows. In logical pixels, relative to the
// top left corner of the scrolled content.
struct GridLayout {
    int width = 0;  // the width of the viewport
    int tileHeight = 0;
    int count = 0;  // the number of tiles

    [[nodiscard]] int columns() const;
    [[nodiscard]] int rows() const;
    [[nodiscard]] int rowPitch() const;
    [[nodiscard]] int tileWidth() const;
    [[nodiscard]] int contentHeight() const;

    [[nodiscard]] QRect tile(int index) const;

    // The tile at `point` of the content, or -1.
    [[nodiscard]] int tileAt(QPoint point) const;

    // The tiles from `first` up to but not including `end`: those of all rows between the heights
    // `top` and `bottom`, and of one row before and after.
    struct Range {
        int first = 0;
        int end = 0;

        bool operator==(const Range&) const = default;
    };
    [[nodiscard]] Range near(int top, int bottom) const;
};

}  // namespace tavo
