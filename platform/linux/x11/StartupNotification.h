// Telling an X11 desktop that an application starts (Startup Notification Protocol 0.1).
//
// Panels and window managers then show that an application starts, and know which of the user's
// clicks its first window answers.
#pragma once

#include <string>

namespace tavo {

struct StartAnnouncement {
    std::string id;           // the program's DESKTOP_STARTUP_ID
    std::string name;         // as the user reads it
    std::string program;      // the path of its executable file
    std::string application;  // the desktop-file id
};

// Announces the start on the X server `display` (in the form of DISPLAY). False when there is no
// server, or it does not answer within XcbConnection::kPatience: then the announcement may not have
// arrived. Invalid UTF-8 is repaired, long text is cut. Any thread.
bool announceStart(const std::string& display, const StartAnnouncement& start);

// Announces that the start is over: the application shows a window, or has failed.
bool announceStartOver(const std::string& display, const std::string& id);

}  // namespace tavo
