// The desktop's preferences as the settings portal tells them (org.freedesktop.portal.Settings, an
// XDG Desktop Portal).
#pragma once

#include <memory>
#include <string>

#include "platform/DesktopSettings.h"

namespace tavo {

class MainQueue;

// Keys: "color-scheme" and "reduced-motion" of org.freedesktop.appearance, "icon-theme" and
// "enable-animations" of org.gnome.desktop.interface, which most portals have on other desktops
// too. Motion is reduced when either key says so.
//
// A portal that runs is asked at once. One that does not run yet is started over the bus, once,
// when the program has had its time to show itself. A portal that comes later, or anew, is asked
// then; one that goes leaves what it said. Bus and portal are talked to on a thread of this
// adapter's own; without a bus, or while one hangs, nothing is known. No bus is started.
//
// `mainQueue` outlives the answer; `address` is as sessionBusAddress() gives it. The first moment
// of a program is a good time to make it.
std::unique_ptr<DesktopSettings> makePortalDesktopSettings(MainQueue& mainQueue,
                                                           std::string address);

}  // namespace tavo
