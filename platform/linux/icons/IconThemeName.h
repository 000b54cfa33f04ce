// Which icon theme the user's session has.
#pragma once

#include <string>
#include <vector>

namespace tavo {

struct IconEnvironment;

// The theme to draw applications with: the first installed one that the session names, else one
// that is usual for the desktop, else whatever known theme is there, else "hicolor". Asked are the
// desktop's own file where it is KDE or LXQt, XSETTINGS, `preferred`, GTK's settings.ini, and the
// files of other desktops.
//
// `preferred` is what the settings portal says, which answers later; "" when it says nothing. On
// desktops that keep their settings elsewhere it says what GNOME's would be, hence its place. Any
// thread; reads small files and may ask the X server.
std::string sessionIconTheme(const IconEnvironment& environment, const std::string& preferred);

// The installed theme that has what the session's theme lacks; "hicolor" when there is none.
std::string fallbackIconTheme(const IconEnvironment& environment);

}  // namespace tavo
