// The program's name on the session bus, and the interface by which desktops activate it (Desktop
// Entry Specification, "D-Bus Activation").
#pragma once

#include <functional>
#include <vector>

#include "platform/StartRequest.h"
#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/BusObject.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {

// Claims the name on each connection of the bus. Lives on the bus thread.
class InstanceBusName {
public:
    struct Events {
        // A desktop, or another start of the program, called org.freedesktop.Application.
        std::function<void(const StartRequest&)> activated;
        // Another process has the name and has been told of our start.
        std::function<void()> superseded;
        // Whether this process has the name.
        std::function<void(bool)> owned;
    };

    // `bus` outlives this. `ours` is what another process is told if it has the name.
    InstanceBusName(SessionBus& bus, StartRequest ours, Events events);
    InstanceBusName(const InstanceBusName&) = delete;
    InstanceBusName& operator=(const InstanceBusName&) = delete;
    // Gives up the name. Callers still unanswered learn of it when the connection closes.
    ~InstanceBusName();

    // Answers the callers so far, and from now on each at once. Until then they wait, because the
    // window might never come.
    void confirmCallers();

private:
    void follow(GDBusConnection* bus);
    void askForName();
    void handOver();
    void called(GVariant* parameters, GDBusMethodInvocation* invocation);

    SessionBus& bus_;
    const StartRequest ours_;
    const Events events_;
    BusObject object_;
    BusCalls calls_;
    int triesLeft_ = 0;
    bool confirms_ = false;
    std::vector<GDBusMethodInvocation*> waiting_;  // owned; answering one gives it away
    Subscription connections_;
};

}  // namespace tavo
