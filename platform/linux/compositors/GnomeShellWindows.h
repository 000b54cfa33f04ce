// The windows that our extension of GNOME Shell tells of.
#pragma once

#include <memory>

#include "platform/linux/compositors/BusWindowLister.h"

namespace tavo {

// GNOME Shell tells other programs nothing of its windows. The extension in extensions/gnome-shell
// answers for it, where the user has turned it on.
std::unique_ptr<BusWindowLister> makeGnomeShellWindows();

}  // namespace tavo
