// What GLib is told about one start: the child's environment.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace tavo {

struct UnrefObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

using LaunchContext = std::unique_ptr<GAppLaunchContext, UnrefObject>;

// Main thread, because it reads the process's environment, which other threads may not while the
// main thread can change it; to be used on any one thread afterwards.
//
// Children get exactly `variables` ("NAME=value").
LaunchContext makeLaunchContext(const std::vector<std::string>& variables);

}  // namespace tavo
