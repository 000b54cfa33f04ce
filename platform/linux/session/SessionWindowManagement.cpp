#include "platform/linux/session/SessionWindowManagement.h"

#include <QGuiApplication>

#include "platform/linux/wayland/WaylandWindowManagement.h"
#include "platform/linux/x11/XcbWindowManagement.h"
#include "support/ApplicationId.h"

namespace tavo {
namespace {

// For a platform without a window manager, such as Qt's "offscreen".
class NullWindowManagement final : public WindowManagement {
public:
    void prepareToShow(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}
    void bringToFront(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}
};

}  // namespace

std::unique_ptr<WindowManagement> makeSessionWindowManagement(const StartEnvironment& environment) {
    if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        return makeXcbWindowManagement(x11->connection());
    }
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        return makeWaylandWindowManagement(environment.value("WAYLAND_DISPLAY").value_or(""),
                                           kApplicationId);
    }
    return std::make_unique<NullWindowManagement>();
}

}  // namespace tavo
