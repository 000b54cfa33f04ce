// Tells when KDE's icons change.
#pragma once

#include <memory>

#include "support/Signal.h"

namespace tavo {

class MainQueue;
class SessionBus;

// Main thread.
class KdeIconChanges {
public:
    virtual ~KdeIconChanges() = default;

    // The user has chosen another icon theme, or its icons have changed. Never inside a call.
    Signal<> changed;
};

// Listens on the session bus for what KDE's own programs listen for: the signal iconChanged of
// org.kde.KIconLoader, and ConfigChanged of org.kde.kconfig.notify about kdeglobals. Calls no
// method. Other desktops do not send these signals. `bus` and `mainQueue` must outlive the result.
std::unique_ptr<KdeIconChanges> watchKdeIcons(SessionBus& bus, MainQueue& mainQueue);

}  // namespace tavo
