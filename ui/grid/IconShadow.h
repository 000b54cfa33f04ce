// The soft shadow below the icon of a tile.
#pragma once

#include <QImage>

namespace tavo {

// The space for the shadow on each side of an icon: in logical pixels, and in device pixels at
// `scale`.
int iconMargin();
int iconMarginPixels(double scale);

// The square `icon` with its shadow, iconMarginPixels(scale) larger on every side; the device pixel
// ratio is `scale`. Any thread.
QImage withShadow(const QImage& icon, double scale);

}  // namespace tavo
