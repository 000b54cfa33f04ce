// Positions on whole device pixels.
#pragma once

#include <QPointF>

class QPainter;

namespace tavo {

// `point` moved to the nearest corner of device pixels, in the painter's own coordinates. At a
// scale of 1.25 or 1.5 most whole logical positions lie between two pixels, and a picture drawn
// there is blurred.
[[nodiscard]] QPointF onDevicePixels(const QPainter& painter, const QPointF& point);

}  // namespace tavo
