// A connection of our own to the session bus, made anew when the bus returns.
//
// The one that libraries share would end the program with the bus, or keep others from connecting
// again. Nobody polls: where the bus has a socket's file, that file's coming is watched.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"
#include "platform/posix/FileDescriptor.h"

namespace tavo {

// Everything happens on the thread it is given, which outlives it and ends before it is destroyed.
class SessionBusConnection {
public:
    struct Events {
        std::function<void(GDBusConnection*)> connected;
        // Called instead when there is no bus at first, and whenever it is lost.
        std::function<void()> none;
    };

    // `address` as sessionBusAddress() gives it.
    SessionBusConnection(GLibThread& thread, std::string address, Events events);
    SessionBusConnection(const SessionBusConnection&) = delete;
    SessionBusConnection& operator=(const SessionBusConnection&) = delete;
    ~SessionBusConnection() = default;

    void connect();

    // Closes the connection; no event comes any more.
    void leave();

    [[nodiscard]] GDBusConnection* connection() const { return bus_.get(); }

private:
    struct Unref {
        void operator()(gpointer object) const { g_object_unref(object); }
    };

    static void connected(GObject* source, GAsyncResult* result, gpointer data);
    static void closed(GDBusConnection* bus, gboolean vanished, GError* error, gpointer data);
    static gboolean folderChanged(gint descriptor, GIOCondition condition, gpointer data);

    void attempt();
    void watch();
    void tryAgainSoon();

    GLibThread& thread_;
    const std::string address_;
    const Events events_;
    std::unique_ptr<GDBusConnection, Unref> bus_;
    gulong closedHandler_ = 0;
    FileDescriptor folder_;  // inotify
    ScopedSource folderChanges_;
    ScopedSource retry_;
    int triesLeft_ = 0;
    bool attempting_ = false;
    bool ended_ = false;
};

}  // namespace tavo
