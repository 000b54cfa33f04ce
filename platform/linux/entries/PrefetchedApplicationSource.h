// A scan for applications that runs while Qt starts.
#pragma once

#include <memory>

#include "platform/ApplicationSource.h"

namespace tavo {

// Asks `source` at once, on a thread of its own. The first call waits for that answer and returns
// it; each later call asks `source` anew on the caller's thread. The destructor waits for the
// thread. `source` is used by several threads, but never by two at once.
std::unique_ptr<ApplicationSource> makePrefetchedApplicationSource(
    std::unique_ptr<ApplicationSource> source);

}  // namespace tavo
