// A systemd scope for each started program, made by the user's service manager.
//
// Without a scope a program stays in the launcher's cgroup: its memory counts as the launcher's,
// and stopping the launcher's unit stops the program. Names follow systemd's conventions for
// desktop environments (app-LAUNCHER-APPLICATION-PID.scope in app.slice).
#pragma once

#include <string>

#include <sys/types.h>

#include "platform/linux/opening/OpeningThread.h"

namespace tavo {

// The name of the scope. Characters that a unit name cannot hold are escaped like systemd-escape(1)
// does.
std::string scopeName(const std::string& identifier, pid_t process);

// Call on the bus thread, while `thread` has a connection to the bus; returns at once. Asks systemd
// to move the running child `process` into a scope of its own. Without systemd, or when it refuses,
// the program stays where it is; the first refusal is reported on standard error. The call does not
// make the bus start systemd: if systemd does not run, it does not manage the session.
void moveToScope(OpeningThread& thread, const std::string& identifier, pid_t process);

}  // namespace tavo
