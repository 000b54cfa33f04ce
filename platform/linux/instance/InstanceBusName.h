// The program's name on the session bus, which one process of the user can have, and what others
// may call there (Desktop Entry Specification, "D-Bus Activation").
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <gio/gio.h>

#include "platform/StartRequest.h"
#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// Everything happens on the thread it is given, which outlives it and ends before it is destroyed.
class InstanceBusName {
public:
    struct Events {
        // org.freedesktop.Application was called. False when this process is ending: the caller
        // is told so.
        std::function<bool(const StartRequest&)> activated;
        // Another process has the name and has been told of our start.
        std::function<void()> superseded;
        // The name is this process's.
        std::function<void()> owned;
    };

    // `ours` is what the other process is told if it has the name.
    InstanceBusName(GLibThread& thread, StartRequest ours, Events events);
    InstanceBusName(const InstanceBusName&) = delete;
    InstanceBusName& operator=(const InstanceBusName&) = delete;
    ~InstanceBusName();

    // Offers the object and asks for the name. Once for each connection.
    void claim(GDBusConnection* bus);

    // From now on callers are answered at once, and those before now: it is sure that the window
    // comes.
    void answerHeld();

    // No event comes any more. The name goes with the connection.
    void leave();

private:
    static void called(GDBusConnection* bus, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data);
    static void nameAnswered(GObject* source, GAsyncResult* result, gpointer data);
    static void handedOver(GObject* source, GAsyncResult* result, gpointer data);

    void askForName(GDBusConnection* bus);
    void handOver(GDBusConnection* bus);

    GLibThread& thread_;
    const StartRequest ours_;
    const Events events_;
    std::unique_ptr<GDBusNodeInfo, decltype(&g_dbus_node_info_unref)> description_;
    int triesLeft_ = 0;
    bool shows_ = false;
    bool ended_ = false;
    std::vector<GDBusMethodInvocation*> held_;  // ours; answering one gives it away
};

}  // namespace tavo
