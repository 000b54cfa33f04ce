#include "ui/look/DevicePixels.h"

#include <QPainter>
#include <cmath>

namespace tavo {

QPointF onDevicePixels(const QPainter& painter, const QPointF& point) {
    const QTransform toDevice = painter.deviceTransform();
    const QPointF device = toDevice.map(point);
    return toDevice.inverted().map(QPointF(std::round(device.x()), std::round(device.y())));
}

}  // namespace tavo
