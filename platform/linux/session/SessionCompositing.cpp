#include "platform/linux/session/SessionCompositing.h"

#include <QGuiApplication>

#include "platform/linux/wayland/WaylandCompositing.h"
#include "platform/linux/x11/XcbCompositing.h"

namespace tavo {

std::unique_ptr<Compositing> makeSessionCompositing() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? makeXcbCompositing(x11->connection()) : makeWaylandCompositing();
}

}  // namespace tavo
