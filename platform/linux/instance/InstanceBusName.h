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

// Claims the name on each new connection to the bus. Use on the bus thread.
class InstanceBusName {
public:
    struct Events {
        // A desktop, or another start of the program, called org.freedesktop.Application.
        std::function<void(const StartRequest&)> activated;
        // Another process has the name and has been told of our start.
        std::function<void()> superseded;
        // Called with whether this process has the name, each time that this is learnt.
        std::function<void(bool)> owned;
    };

    // `bus` must outlive this object. `ours` is passed to the process that already has the name.
    InstanceBusName(SessionBus& bus, StartRequest ours, Events events);
    InstanceBusName(const InstanceBusName&) = delete;
    InstanceBusName& operator=(const InstanceBusName&) = delete;
    // Gives up the name. Callers still unanswered learn of it when the connection closes.
    ~InstanceBusName();

    // Answers the method calls so far, and later ones at once. Callers wait until then, because
    // this process might never show its window.
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
