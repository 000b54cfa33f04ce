// One process per user.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/MainThreadPoster.h"
#include "platform/StartRequest.h"

namespace tavo {

class InstanceBusName;
class InstanceListener;
class InstanceSocket;
class SessionBus;

// A second start reaches the first over the socket (InstanceSocket), which is quick and needs no
// bus, or over the bus name (InstanceBusName), by which desktops activate the program and two
// starts find each other that share no runtime folder. Both are served on the bus thread, so a
// start is heard at any time. A start is confirmed, which lets it end, once this process is sure to
// show its window. A start whose first one fails before that, for want of a display, takes its
// place.
//
// Constructor, destructor and all functions are for the main thread.
class SingleInstance {
public:
    // Listens and claims the bus name from now on. `socket` is what claimInstance() gave this
    // process, null where there is no folder for one; `request` is passed to another process that
    // owns the name. `bus` must outlive this object.
    SingleInstance(SessionBus& bus, std::unique_ptr<InstanceSocket> socket,
                   const StartRequest& request);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance();

    struct Events {
        // Another start wants the window. Of several starts since the last call, the latest one's
        // request.
        std::function<void(const StartRequest&)> activated;
        // Another process owns the bus name, and has been told to show its window.
        std::function<void()> superseded;
    };

    // Confirms starts from now on. Events come on the main thread, also for what happened before,
    // until stopServing(). `mainQueue` must live until then.
    void serve(MainQueue& mainQueue, Events events);
    void stopServing();

    // Whether another process owns the bus name.
    [[nodiscard]] bool superseded() const { return superseded_; }

    // Whether another start would find this process.
    [[nodiscard]] bool reachable() const { return hasSocket_ || ownsName_; }

    // Gives up socket and name, so that the next start is the first. False, with nothing given up,
    // when a start waits for the window.
    [[nodiscard]] bool endUnlessAsked();

private:
    void take(const StartRequest& request);
    void announce();
    void deliver();
    void end();

    SessionBus& bus_;
    const bool hasSocket_;
    std::atomic<bool> superseded_ = false;
    std::atomic<bool> ownsName_ = false;
    std::mutex mutex_;
    std::vector<StartRequest> requests_;  // under the mutex; not delivered yet

    // The members down to serving_ are used on the bus thread only.
    std::unique_ptr<InstanceListener> listener_;
    std::unique_ptr<InstanceBusName> name_;
    bool serving_ = false;

    // Used on the main thread; the bus thread posts by poster_ while serving_ is true.
    Events events_;
    std::optional<MainThreadPoster> poster_;
};

}  // namespace tavo
