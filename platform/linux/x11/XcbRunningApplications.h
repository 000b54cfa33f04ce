// Running applications as an X11 window manager shows them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// The X server's time of the user's last input to this program.
using UserTime = std::function<std::optional<std::uint32_t>()>;

// An application runs while it has managed windows (Extended Window Manager Hints): by identifier,
// the windows that WindowMatcher gives to it; by process, the windows of that process on this host.
// A dialog belongs to the window that it is for; panels, desktops and tool tips belong to no
// application. Of several processes with one identifier, the one with the topmost window is first.
//
// Activation brings forward all windows of the identifier, or of the process where that alone is
// known: their order kept, the topmost one active, minimised ones restored. Windows on other
// desktops stay there; only when there is none on the current desktop, the desktop changes to that
// of the topmost one. The request has the source indication of a pager (2) and the server's present
// time, because the server may refuse the focus to an older time.
//
// Not every window manager checks whether the user still wants the window, so this does: nothing
// happens when the user has turned to another program since the click, that is when the active
// window
//   - is neither ours nor the application's, and was not active at noteUserRequest(),
//   - and has had input later than this program had at noteUserRequest() (_NET_WM_USER_TIME against
//     `userTime`), or does not say.
// With an empty `userTime` the user counts as still waiting.
//
// An activation with a process and an identifier that no function here has answered tells that the
// process was started as that identifier; so does GIO_LAUNCHED_DESKTOP_FILE in the process's
// environment. A PID that another process has by now is neither described nor brought forward.
//
// Connects to `display` at the first call, and again after the connection broke. Without a
// connection, and when the server does not answer within half a second, the answers are empty.
std::unique_ptr<RunningApplications> makeXcbRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime);

}  // namespace tavo
