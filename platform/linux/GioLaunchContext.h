// What GLib is told about one start: the child's environment and the start's identifier.
#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "platform/linux/StartEnvironment.h"

namespace tavo {

struct UnrefObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

using LaunchContext = std::unique_ptr<GAppLaunchContext, UnrefObject>;

// Main thread, because it reads the process's environment, which other threads may not while the
// main thread can change it; to be used on any one thread afterwards.
//
// Children get exactly `environment.forChildren()`, and DESKTOP_STARTUP_ID when `startupId` is not
// empty and the entry wants startup notification.
LaunchContext makeLaunchContext(const StartEnvironment& environment, const std::string& startupId);

}  // namespace tavo
