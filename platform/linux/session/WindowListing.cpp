#include "platform/linux/session/WindowListing.h"

#include <array>
#include <string>

#include "platform/linux/wayland/WaylandToplevels.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tavo {
namespace {

// A window manager that follows the Extended Window Manager Hints names a window of its own in
// _NET_SUPPORTING_WM_CHECK.
bool hasWindowManager(const std::string& display) {
    const auto connection = display.empty() ? nullptr : XcbConnection::open(display);
    if (!connection) {
        return false;
    }
    connection->beginExchange();
    constexpr std::array kNames = {"_NET_SUPPORTING_WM_CHECK"};
    const xcb_atom_t check = connection->atoms(kNames).front();
    return connection->number(connection->property(connection->root(), check, XCB_ATOM_WINDOW))
        .has_value();
}

}  // namespace

bool canListWindows(const StartEnvironment& environment, bool wayland) {
    if (!wayland) {
        return hasWindowManager(environment.value("DISPLAY").value_or(""));
    }
    const auto windows = WaylandToplevels::ask(environment.value("WAYLAND_DISPLAY").value_or(""));
    return windows && windows->tells();
}

}  // namespace tavo
