// Where the tiles of the grid stand.
#pragma once

#include <QPoint>
#include <QRect>

namespace tavo {

// As many columns of 100 to 130 as fit with 20 between them, centred, inside a padding of 28; rows
// 24 apart. Pure geometry in logical pixels from the top left corner of the whole content.
struct GridLayout {
    int width = 0;  // of the view
    int tileHeight = 0;
    int count = 0;  // tiles

    [[nodiscard]] int columns() const;
    [[nodiscard]] int rows() const;
    [[nodiscard]] int rowPitch() const;
    [[nodiscard]] int tileWidth() const;
    [[nodiscard]] int contentHeight() const;

    [[nodiscard]] QRect tile(int index) const;

    // The tile at a point of the content, or -1.
    [[nodiscard]] int tileAt(QPoint point) const;

    // The first tile of the first row, and the one past the last of the last row, that touch
    // `top` to `bottom`, with one row more on either side.
    struct Range {
        int first = 0;
        int end = 0;

        bool operator==(const Range&) const = default;
    };
    [[nodiscard]] Range near(int top, int bottom) const;
};

}  // namespace tavo
