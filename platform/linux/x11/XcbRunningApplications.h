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
// those that WindowMatcher gives to it; by process, those of that process on this host. Dialogs
// belong to the window that they are for; panels, desktops and tool tips to nobody. Of several
// processes with one identifier the one whose window is on top comes first.
//
// To be asked for by identifier is the user's click. Activation brings forward all windows of the
// identifier, or of the process where that is all that is known: their order kept, the topmost one
// active, minimised ones restored; those of other desktops only when there is none on the current
// one, which is then left. It is asked for as a pager asks (source indication 2), with the server's
// present time, because with an older one the server may refuse the focus; whether the user still
// wants it is decided here, as not every window manager looks: nothing happens when the user has
// gone on to another program's window since the click, that is when the active window
//   - is neither ours nor the application's, nor was active already at the click,
//   - and has had input later than this program had at the click (_NET_WM_USER_TIME against
//     `userTime`), or does not say.
// Without a `userTime` nobody can have gone on.
//
// An activation with process and identifier that was not answered here tells that the one was
// started as the other; so does what GIO leaves in the process's environment. A process whose
// number has come to mean another one is neither described nor brought forward.
//
// Connects to `display` at the first question, again after the connection broke, and answers
// nothing without one. Any thread for all of it. A server that does not answer within half a
// second counts as one that cannot tell.
std::unique_ptr<RunningApplications> makeXcbRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime);

}  // namespace tavo
