// Whether a panel of the session shows StatusNotifierItems.
#pragma once

#include <functional>

#include <gio/gio.h>

#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {

// Asks org.kde.StatusNotifierWatcher, on each new connection to the bus. Use on the bus thread.
class StatusNotifierWatch {
public:
    // `bus` must outlive this object. Calls `host` with whether a panel has registered as host:
    // when that is known, and whenever it may have changed. Without a watcher, and without a bus,
    // it is false.
    StatusNotifierWatch(SessionBus& bus, std::function<void(bool host)> host);
    StatusNotifierWatch(const StatusNotifierWatch&) = delete;
    StatusNotifierWatch& operator=(const StatusNotifierWatch&) = delete;
    ~StatusNotifierWatch() { leave(); }

private:
    static void appeared(GDBusConnection* bus, const gchar* name, const gchar* owner,
                         gpointer data);
    static void vanished(GDBusConnection* bus, const gchar* name, gpointer data);
    static void signalled(GDBusConnection* bus, const gchar* sender, const gchar* path,
                          const gchar* interface, const gchar* signal, GVariant* parameters,
                          gpointer data);

    void follow(GDBusConnection* bus);
    void leave();
    void askForHost();

    const std::function<void(bool host)> host_;
    BusCalls calls_;
    GDBusConnection* bus_ = nullptr;  // while it is watched
    guint watch_ = 0;
    guint signals_ = 0;
    Subscription connections_;
};

}  // namespace tavo
