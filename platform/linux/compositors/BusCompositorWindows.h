// The windows of compositors that tell of them on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "platform/linux/compositors/BusWindowLister.h"

namespace tavo {

class SessionBus;

// Asks the listers in turn until one answers, for as long as `patience` at most for all of them
// together; a later answer is dropped. That is the only wait: bringing windows forward waits for
// nothing. Where a compositor does not say which window is active, the answer follows from whether
// one of our own windows has the keyboard focus.
//
// There is no signal for a new window. onChanged() calls when the focus comes to or leaves this
// program, as it does when an application that was started from here shows its window.
//
// Make it after the application object. `bus` must outlive the result.
std::unique_ptr<CompositorWindows> makeBusCompositorWindows(
    SessionBus& bus, std::vector<std::unique_ptr<BusWindowLister>> listers,
    std::chrono::milliseconds patience = std::chrono::milliseconds(250));

}  // namespace tavo
