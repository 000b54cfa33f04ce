// Waiting for the first window of applications that start.
#pragma once

#include <functional>
#include <memory>

#include "platform/MainQueue.h"
#include "platform/RunningApplications.h"
#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

// Looks for the window when the window system reports a change, and every five seconds besides:
// some programs give their window its name only after showing it, which does not change the list of
// windows. Where windows are not listed, the first change ends the start, because a window of the
// application or the user has taken the focus; which of the two is not known, so nothing was seen.
// Subscribed to the window system only
// while something starts.
class FirstWindow {
public:
    // Construct and destroy on the main thread. Both arguments must outlive the object; when
    // `running` is null, no window is ever seen.
    FirstWindow(MainQueue& mainQueue, RunningApplications* running);

    // When the application shows a window, ends `start` and calls `seen` on the main thread. Does
    // not call it when the start is over before, nor after this object is destroyed. Any thread.
    void await(const RunningApplication& application, const std::shared_ptr<PendingLaunch>& start,
               std::function<void()> seen) const;

private:
    class Waiting;

    const std::shared_ptr<Waiting> waiting_;
};

}  // namespace tavo
