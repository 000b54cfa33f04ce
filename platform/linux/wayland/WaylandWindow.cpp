#include "platform/linux/wayland/WaylandWindow.h"

#include <QGuiApplication>
#include <QWindow>
#include <algorithm>

#include <qpa/qplatformnativeinterface.h>

namespace tavo {

wl_display* qtWaylandDisplay() {
    QPlatformNativeInterface* const native = QGuiApplication::platformNativeInterface();
    return static_cast<wl_display*>(
        native == nullptr || !QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
            ? nullptr
            : native->nativeResourceForIntegration("wl_display"));
}

QWindow* ownWindow(std::uintptr_t window) {
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto found = std::ranges::find_if(windows, [window](const QWindow* each) {
        return each->handle() != nullptr && each->winId() == window;
    });
    return found == windows.end() ? nullptr : *found;
}

wl_surface* waylandSurfaceOf(QWindow* window) {
    return static_cast<wl_surface*>(
        window == nullptr || window->handle() == nullptr || qtWaylandDisplay() == nullptr
            ? nullptr
            : QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface",
                                                                                  window));
}

}  // namespace tavo
