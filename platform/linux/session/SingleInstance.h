// The program as the user's session knows it: one process, which other starts and the session bus
// reach, and which has its status item on the bus.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <sys/types.h>

#include "platform/StartRequest.h"
#include "platform/StatusItemContent.h"

namespace tavo {

class InstanceSocket;
class MainQueue;

// One process per user, by two roads. The socket (InstanceSocket) is the quick one, and needs no
// bus. The bus name (InstanceBusName) is how desktops activate the program, and how two starts find
// each other that do not share a runtime folder. What comes by either is taken by a thread of its
// own, at any time. It is confirmed as soon as this process is sure to show a window; a start that
// finds another one which fails, for want of a display, takes its place.
//
// A bus that is not there, hangs, dies or returns stops nothing: the name is claimed again when
// the bus is back, without polling.
class SingleInstance {
public:
    // With what claimInstance() gave this process, or null where there is no place for a socket.
    explicit SingleInstance(std::unique_ptr<InstanceSocket> socket);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance();

    // Once, as soon as can be: hears other starts from now on, and claims the name on the bus at
    // `address` (as sessionBusAddress() gives it). `request` is for another owner of the name.
    void attend(const std::string& address, const StartRequest& request);

    struct Events {
        // Another start wants the window.
        std::function<void(const StartRequest&)> activated;
        // Another process owns the bus name, and has been told to show its window.
        std::function<void()> superseded;
        // What the functions below answer is different now.
        std::function<void()> changed;
        // The user clicked on the status item.
        std::function<void(const StatusItemClick&)> itemClicked;
    };

    // From now on starts are confirmed, and events come, on the main thread, also for what has
    // happened before; until stopServing(). `mainQueue` lives until then.
    void serve(MainQueue& mainQueue, Events events);
    void stopServing();

    // Whether another process owns the bus name.
    [[nodiscard]] bool superseded() const;

    // Whether another start would find this process.
    [[nodiscard]] bool reachable() const;

    // Whether a panel takes status items over the bus; absent until that is known.
    [[nodiscard]] std::optional<bool> notifierHost() const;

    // The process that has most to do with that panel; 0 where it is not known.
    [[nodiscard]] pid_t notifierProcess() const;

    // The status item is on the bus from now on, whenever there is a bus, until withdrawItem().
    void offerItem(StatusItemContent item);
    void repaintItem(std::vector<StatusItemImage> images);
    void withdrawItem();

    // Gives up being the one, so that the next start is the first; false, and nothing done, when a
    // start is waiting for its answer.
    [[nodiscard]] bool endUnlessAsked();

private:
    class Shared;
    class Presence;
    std::unique_ptr<InstanceSocket> socket_;  // until somebody attends to it

    const std::shared_ptr<Shared> shared_;
    std::unique_ptr<Presence> presence_;
};

}  // namespace tavo
