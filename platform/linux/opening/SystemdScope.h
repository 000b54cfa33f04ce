// A place of its own for each started program under the user's systemd.
//
// Without one, everything that the launcher starts counts as a part of it: its memory is the
// launcher's, and what ends the launcher's unit ends it too. The names follow systemd's conventions
// for desktop environments (app-LAUNCHER-APPLICATION-NUMBER.scope in app.slice).
#pragma once

#include <string>

#include <sys/types.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// The name of the scope; characters that a unit's name cannot hold are escaped as systemd does.
std::string scopeName(const std::string& identifier, pid_t process);

// On `thread`, connected to the session bus; returns at once. Asks systemd to take the child
// `process`, running already, into a scope of its own. Where no systemd is there, or it does not
// want to, the program goes on where it is; a refusal is said once on standard error. Not asked to
// start: a systemd that does not run manages nothing.
void moveToScope(GLibThread& thread, const std::string& identifier, pid_t process);

}  // namespace tavo
