// Rounds positions to whole device pixels.
#pragma once

#include <QPointF>

class QPainter;

namespace tavo {

// The corner of a device pixel that is nearest to `point`, both in the painter's coordinates.
// Pictures are drawn there because, at a scale of 1.25 or 1.5, most whole logical positions are
// between two device pixels, where a picture is blurred.
[[nodiscard]] QPointF onDevicePixels(const QPainter& painter, const QPointF& point);

}  // namespace tavo
