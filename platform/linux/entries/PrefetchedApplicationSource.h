// A scan of applications that runs while the toolkit starts.
#pragma once

#include <memory>

#include "platform/ApplicationSource.h"

namespace tavo {

// Asks `source` at once, on a thread of its own. The first call waits for that answer and returns
// it; later calls ask `source` anew on the caller's thread. Its end waits for the thread, too.
// `source` must not be bound to a thread; never is it asked on two at once.
std::unique_ptr<ApplicationSource> makePrefetchedApplicationSource(
    std::unique_ptr<ApplicationSource> source);

}  // namespace tavo
