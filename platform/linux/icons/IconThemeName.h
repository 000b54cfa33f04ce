// The name of the session's icon theme.
#pragma once

#include <string>
#include <vector>

namespace tavo {

struct IconEnvironment;

// The first installed theme that one of these sources names, in this order: the desktop's own file,
// if the desktop is KDE or LXQt; XSETTINGS; `preferred`; GTK's settings.ini; the files of KDE and
// LXQt. Else the desktop's usual theme, else fallbackIconTheme().
//
// `preferred` is the theme that the settings portal names, "" for none. It comes after XSETTINGS
// because the portal answers with GNOME's default on desktops that keep their settings elsewhere.
// Any thread; reads small files and may wait for the X server.
std::string sessionIconTheme(const IconEnvironment& environment, const std::string& preferred);

// The theme for icons that the session's theme lacks: the first installed one of the common themes
// with many icons, or "hicolor".
std::string fallbackIconTheme(const IconEnvironment& environment);

}  // namespace tavo
