#include "ui/grid/GridLayout.h"

#include <algorithm>

#include "ui/look/Metrics.h"
#include "ui/look/TextScale.h"

namespace tavo {
namespace {

using namespace metrics;

int usableWidth(int width) {
    return std::max(kSmallestColumn, width - 2 * kGridPadding);
}

}  // namespace

int GridLayout::columns() const {
    return std::max(1, (usableWidth(width) + kColumnSpacing) / (smallestColumn() + kColumnSpacing));
}

int GridLayout::rows() const {
    return (count + columns() - 1) / columns();
}

int GridLayout::rowPitch() const {
    return tileHeight + kRowSpacing;
}

int GridLayout::tileWidth() const {
    const int shared = usableWidth(width) - (columns() - 1) * kColumnSpacing;
    return std::min(largestColumn(), shared / columns());
}

int GridLayout::contentHeight() const {
    return rows() == 0 ? 2 * kGridPadding : 2 * kGridPadding + rows() * rowPitch() - kRowSpacing;
}

QRect GridLayout::tile(int index) const {
    const int used = columns() * tileWidth() + (columns() - 1) * kColumnSpacing;
    const int left = std::max(kGridPadding, (width - used) / 2);
    return {left + (index % columns()) * (tileWidth() + kColumnSpacing),
            kGridPadding + (index / columns()) * rowPitch(), tileWidth(), tileHeight};
}

int GridLayout::tileAt(QPoint point) const {
    const int row = (point.y() - kGridPadding) / rowPitch();
    if (point.y() < kGridPadding || row >= rows()) {
        return -1;
    }
    const int end = std::min(count, (row + 1) * columns());
    for (int index = row * columns(); index < end; ++index) {
        if (tile(index).contains(point)) {
            return index;
        }
    }
    return -1;
}

GridLayout::Range GridLayout::near(int top, int bottom) const {
    const int first = std::clamp((top - kGridPadding) / rowPitch() - 1, 0, rows());
    const int last = std::clamp((bottom - kGridPadding) / rowPitch() + 2, 0, rows());
    return {first * columns(), std::min(count, last * columns())};
}

}  // namespace tavo
