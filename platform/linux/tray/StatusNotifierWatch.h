// Whether a panel of the session shows status items of the StatusNotifierItem kind (the
// StatusNotifierItem specification, as the KDE names of it are in use everywhere).
#pragma once

#include <functional>

#include <sys/types.h>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// Everything happens on the thread it is given, which outlives it and ends before it is destroyed.
class StatusNotifierWatch {
public:
    struct Events {
        // The answer when it is known, and whenever it is another one.
        std::function<void(bool host)> host;
        // The process of the watcher, which with most panels is the panel's own.
        std::function<void(pid_t process)> process;
    };

    StatusNotifierWatch(GLibThread& thread, Events events);
    StatusNotifierWatch(const StatusNotifierWatch&) = delete;
    StatusNotifierWatch& operator=(const StatusNotifierWatch&) = delete;
    ~StatusNotifierWatch() = default;

    // Follows what the watcher on this bus says, until leave().
    void follow(GDBusConnection* bus);

    void leave();

private:
    static void appeared(GDBusConnection* bus, const gchar* name, const gchar* owner,
                         gpointer data);
    static void vanished(GDBusConnection* bus, const gchar* name, gpointer data);
    static void hostsChanged(GDBusConnection* bus, const gchar* sender, const gchar* path,
                             const gchar* interface, const gchar* signal, GVariant* parameters,
                             gpointer data);
    static void answered(GObject* source, GAsyncResult* result, gpointer data);
    static void processAnswered(GObject* source, GAsyncResult* result, gpointer data);

    void askForProcess(GDBusConnection* bus, const char* owner);
    void ask(GDBusConnection* bus);

    GLibThread& thread_;
    const Events events_;
    GDBusConnection* bus_ = nullptr;  // while it is followed
    guint watch_ = 0;
    guint signals_ = 0;
};

}  // namespace tavo
