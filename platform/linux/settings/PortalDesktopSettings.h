// The desktop's preferences from the settings portal (org.freedesktop.portal.Settings of XDG
// Desktop Portal).
#pragma once

#include <memory>

#include "platform/DesktopSettings.h"

namespace tavo {

class MainQueue;
class SessionBus;

// Keys: "color-scheme", "accent-color", "contrast" and "reduced-motion" of
// org.freedesktop.appearance; "high-contrast" of org.gnome.desktop.a11y.interface; those of
// org.gnome.desktop.interface for themes, font, size of text, animations and text cursor, which
// most portals have on other desktops too; "double-click" of org.gnome.desktop.peripherals.mouse,
// or of org.gnome.settings-daemon.peripherals.mouse in older portals. Motion is reduced and
// contrast raised when either group says so. The name of a dark GTK theme makes the colours dark
// where the user has chosen neither.
//
// A portal that runs is asked at once. One that does not run yet is started over the bus, once,
// half a second later, which is after the first frame. A portal that starts later, or again, is
// asked then. When it ends, its answers are kept. Without a bus, and as long as one does not
// answer, every preference is at its default.
//
// `bus` and `mainQueue` must outlive the result. Make it as early as possible, so that the answer
// comes before the first frame.
std::unique_ptr<DesktopSettings> makePortalDesktopSettings(SessionBus& bus, MainQueue& mainQueue);

}  // namespace tavo
