// The windows that KWin tells of on the session bus.
#pragma once

#include <memory>

#include "platform/linux/compositors/BusWindowLister.h"

namespace tavo {

// KWin lists and activates its normal windows for KRunner (org.kde.krunner1 at /WindowsRunner), and
// tells the names of each (getWindowInfo of org.kde.KWin). It does so for every program, on X11 and
// Wayland, from Plasma 5 on. It does not say which window is active.
std::unique_ptr<BusWindowLister> makeKWinWindows();

}  // namespace tavo
