// Waiting for the first window of applications that start.
#pragma once

#include <functional>
#include <memory>

#include "platform/MainQueue.h"
#include "platform/RunningApplications.h"
#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

// Asks for the window when the window system tells of a change, and every five seconds besides:
// some programs name their window only after it is shown, which is no change to the list of
// windows. Subscribed to the window system only while something starts.
class FirstWindow {
public:
    // Made and ended on the main thread. Both outlive it; without `running` no window is ever seen.
    FirstWindow(MainQueue& mainQueue, RunningApplications* running);

    // Any thread. When the application shows a window, `start` is over and `seen` is called, on
    // the main thread. Not called when the start is over before, nor after this has ended.
    void await(const RunningApplication& application, const std::shared_ptr<PendingLaunch>& start,
               std::function<void()> seen) const;

private:
    class Waiting;

    const std::shared_ptr<Waiting> waiting_;
};

}  // namespace tavo
