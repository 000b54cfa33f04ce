#include "platform/linux/wayland/WaylandWindow.h"

#include <QGuiApplication>
#include <QWindow>
#include <algorithm>

#include <qpa/qplatformnativeinterface.h>

namespace tavo {

// Qt 6.5 and later have a public class for both.
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)

wl_display* qtWaylandDisplay() {
    const auto* const qt = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    return qt == nullptr ? nullptr : qt->display();
}

wl_compositor* qtWaylandCompositor() {
    const auto* const qt = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    return qt == nullptr ? nullptr : qt->compositor();
}

#else

namespace {

void* integrationResource(const char* name) {
    QPlatformNativeInterface* const native = QGuiApplication::platformNativeInterface();
    return native == nullptr ||
                   !QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
               ? nullptr
               : native->nativeResourceForIntegration(name);
}

}  // namespace

wl_display* qtWaylandDisplay() {
    return static_cast<wl_display*>(integrationResource("wl_display"));
}

wl_compositor* qtWaylandCompositor() {
    return static_cast<wl_compositor*>(integrationResource("compositor"));
}

#endif

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
