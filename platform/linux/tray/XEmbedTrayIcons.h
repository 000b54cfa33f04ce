// Qt's status items as windows embedded in an X11 system tray (XEmbed).
#pragma once

#include <functional>

namespace tavo {

// Each QSystemTrayIcon constructed inside `make` is an XEmbed one. Otherwise Qt chooses between
// XEmbed and StatusNotifierItem by what it finds on the bus at its first look, and keeps to that.
// Main thread.
void withXEmbedTrayIcons(const std::function<void()>& make);

}  // namespace tavo
