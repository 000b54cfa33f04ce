// Waiting for the first window of applications that start.
#pragma once

#include <functional>
#include <memory>

#include "platform/MainQueue.h"
#include "platform/RunningApplications.h"
#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

// Asks again and again, because not every desktop tells by itself: ten times a second in the first
// two seconds of a start, twice a second until the start is over, and never otherwise.
class FirstWindow {
public:
    // Whether an application shows a window now. Called on the main thread.
    using Shows = std::function<bool(const RunningApplication&)>;

    // Made and ended on the main thread; `mainQueue` outlives it. With an empty `shows` nothing is
    // ever asked.
    FirstWindow(MainQueue* mainQueue, Shows shows);

    // Any thread. When the application shows a window, `start` is over and `seen` is called, on
    // the main thread; never once the start was over before, nor after this has ended.
    void await(const RunningApplication& application, const std::shared_ptr<PendingLaunch>& start,
               std::function<void()> seen) const;

private:
    struct Source {
        MainQueue* mainQueue;
        Shows shows;
    };
    struct Wait;

    static void check(const std::weak_ptr<const Source>& source, Wait wait);

    const std::shared_ptr<const Source> source_;
};

}  // namespace tavo
