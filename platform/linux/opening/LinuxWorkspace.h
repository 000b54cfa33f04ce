// The workspace of Linux desktops: opens desktop entries and application bundles.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

class SessionBus;

struct OpeningSettings {
    // Must outlive the workspace.
    MainQueue& mainQueue;

    // What started applications inherit. Its PATH is where programs are looked for.
    StartEnvironment environment;

    // Whether this is a Wayland session (isWaylandSession); else an X11 one, at DISPLAY.
    bool wayland = false;

    // Outlives the workspace, whose openings run on the bus's thread.
    SessionBus& bus;

    // The folders in which desktop entries lie ("/usr/share/applications" and the like, without a
    // slash at the end): an entry's identifier is its path from there.
    std::vector<std::string> applicationFolders;

    // The X11 server's time of the user's last input, which lets a started program come to the
    // front. Called on the main thread; may be empty.
    std::function<std::optional<std::uint32_t>()> userTime;

    // A token by which the application of this identifier may come to the front on Wayland
    // (xdg-activation); empty when there is none. Called on the main thread; may be empty.
    std::function<std::string(const std::string& identifier)> activationToken = {};

    // Tells whether windows are listed, and when a started application shows its first one; used on
    // the main thread. Outlives the workspace; null: windows are not listed.
    RunningApplications* running = nullptr;

    // How long a started program is watched for an early end.
    std::chrono::milliseconds patience{2000};

    // How long an activated service may take to answer: as long as the bus itself waits.
    std::chrono::milliseconds busPatience{25000};

    // How long an application that shows no window counts as still starting.
    std::chrono::milliseconds startingTime{15000};
};

// bundle() answers for an entry (a file "*.desktop") its desktop-file id as identifier
// ("org.example.App.desktop", '-' for '/') and the program of its command as executable; for a
// folder, what readBundleFolder() says. The file is read once for each click: openApplication()
// uses what bundle() has just read.
//
// An entry is activated over the session bus where it can be, else started, in a terminal of
// terminalCommand() if it wants one. Completion:
//   - with an error, soon, when anything that the start needs is missing;
//   - with an error when the program ends within `patience` by a signal or with a status that is
//     not 0, when the bus refuses the activation, or the service does not answer in `busPatience`;
//   - without error, and with nothing running, when the program ends within `patience` with
//     status 0: it handed over to another process;
//   - without error and with the running application otherwise: when it shows its first window,
//     at the end of `patience`, or when the activated service has answered.
// A bundle's program is started directly; its completion is called as soon as it has begun. A
// session bus that does not answer does not delay bundles, delays entries by 0.25 s once, and makes
// activations fail until it answers.
//
// While an application is starting, it is not started again: the completion comes without error
// and with nothing running. It is starting until it shows a window, it ends, or `startingTime` has
// passed and, with a service, its answer has come. This holds only for openings that are to come to
// the front and have no address; the others are started each time. Where windows
// are not listed, an entry that shows one main window however often it is started
// (SingleMainWindow=true, DBusActivatable=true) counts as starting only until its service has
// answered: there a click can bring its window forward only by starting it again.
//
// An address is put in place of %u and %U in an entry's command, or given to its service; bundles
// know nothing of it.
//
// On X11 an application that is to come to the front gets a startup id of its own
// (DESKTOP_STARTUP_ID), and the desktop is told of the start, and of its end, when the entry wants
// that (StartupNotify).
//
// Started programs have a session of their own (and, under systemd, a scope), the null device as
// standard input, no descriptor of ours but standard output and error, and outlive us; the home
// folder is their working directory unless an entry says another. They are reaped for as long as
// the workspace lives, and by the system afterwards. Construct and destroy it on the main thread;
// completions that are due then are dropped.
std::unique_ptr<Workspace> makeLinuxWorkspace(OpeningSettings settings);

}  // namespace tavo
