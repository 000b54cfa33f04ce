#include "platform/linux/wayland/WaylandSession.h"

#include <wayland-client.h>

namespace tavo {

bool isWaylandSession(const StartEnvironment& environment) {
    const std::string display = environment.value("WAYLAND_DISPLAY").value_or("");
    wl_display* const connection = display.empty() ? nullptr : wl_display_connect(display.c_str());
    if (connection != nullptr) {
        wl_display_disconnect(connection);
    }
    return connection != nullptr;
}

}  // namespace tavo
