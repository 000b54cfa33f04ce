// The workspace over GIO: desktop entries and application bundles.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/StartEnvironment.h"

namespace tavo {

struct OpeningSettings {
    // What started applications inherit; also where programs are looked for.
    StartEnvironment environment;

    // The folders in which desktop entries lie ("/usr/share/applications" and the like): an
    // entry's identifier is its path from there.
    std::vector<std::string> applicationFolders;

    // The X server's time of the user's last input, which lets a started program come to the
    // front. Called on the main thread; may be empty.
    std::function<std::optional<std::uint32_t>()> userTime;

    // How long a started program is watched for an early end.
    std::chrono::milliseconds patience{2000};
};

// An entry (a file "*.desktop") has its desktop-file id as identifier ("org.example.App.desktop",
// '-' for '/') and the first word of its command as executable; a folder has what
// readBundleFolder() says.
//
// An entry is started by GIO, over the session bus where it can be activated so. Completion:
//   - at once with an error when anything that the start needs is missing;
//   - with an error when the program ends within `patience` by a signal or with a status that is
//     not 0, or when the bus refuses the activation;
//   - without error, and with nothing running, when it ends in that time with status 0: it handed
//     over to somebody else;
//   - without error and with the running application otherwise, at the end of `patience` or when
//     the activated service has answered.
// A bundle's program is started directly; completion as soon as it has begun.
//
// Started programs have a session of their own, the null device as standard input, no descriptor
// of ours but the standard two, and outlive us; the home folder is their working directory unless
// an entry says another. They are reaped for as long as the workspace lives, and by the system
// afterwards. Completions arrive on a thread of the workspace's own; those that are due when it
// ends are dropped.
std::unique_ptr<Workspace> makeGioWorkspace(OpeningSettings settings);

}  // namespace tavo
