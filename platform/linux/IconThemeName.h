// Which icon theme the user's session has.
#pragma once

#include <string>
#include <vector>

namespace tavo {

struct IconEnvironment;

// The theme to draw applications with: `preferred` when it is installed, else the first installed
// one that the session's configuration names, else one that is usual for the desktop, else
// whatever known theme is there, else "hicolor". XSETTINGS, GTK's settings.ini and KDE's and
// LXQt's own files are asked, the desktop's own kind first.
//
// `preferred` is for a settings service that answers later, as the settings portal does; "" when
// there is none. Any thread; reads small files and may ask the X server.
std::string sessionIconTheme(const IconEnvironment& environment, const std::string& preferred);

// The installed theme that has what the session's theme lacks; "hicolor" when there is none.
std::string fallbackIconTheme(const IconEnvironment& environment);

}  // namespace tavo
