// Tells when the settings that a desktop publishes to X clients change (XSETTINGS 0.5,
// freedesktop.org).
#pragma once

#include <memory>

#include "support/Signal.h"

namespace tavo {

// Use on the main thread, while the QGuiApplication exists.
class XSettingsWatch {
public:
    virtual ~XSettingsWatch() = default;

    // Any setting has changed, or a settings manager has come or gone.
    Signal<> changed;
};

// Listens on Qt's connection to the X server. Null where Qt does not use X11.
std::unique_ptr<XSettingsWatch> watchXSettings();

}  // namespace tavo
