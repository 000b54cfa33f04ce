#include "platform/linux/tray/StatusNotifierWatch.h"

#include <utility>

#include "platform/linux/dbus/BusDaemonCalls.h"
#include "platform/linux/dbus/Variant.h"

namespace tavo {
namespace {

constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";
constexpr char kPath[] = "/StatusNotifierWatcher";
constexpr char kHostRegistered[] = "IsStatusNotifierHostRegistered";

}  // namespace

StatusNotifierWatch::StatusNotifierWatch(GLibThread& thread, Events events)
    : thread_(thread), events_(std::move(events)) {}

void StatusNotifierWatch::follow(GDBusConnection* bus) {
    bus_ = bus;
    signals_ = g_dbus_connection_signal_subscribe(
        bus, kWatcher, kWatcher, nullptr, kPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        &StatusNotifierWatch::hostsChanged, this, nullptr);
    watch_ = g_bus_watch_name_on_connection(bus, kWatcher, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            &StatusNotifierWatch::appeared,
                                            &StatusNotifierWatch::vanished, this, nullptr);
}

void StatusNotifierWatch::leave() {
    if (bus_ != nullptr) {
        g_bus_unwatch_name(std::exchange(watch_, 0));
        g_dbus_connection_signal_unsubscribe(bus_, std::exchange(signals_, 0));
        bus_ = nullptr;
    }
}

void StatusNotifierWatch::appeared(GDBusConnection* bus, const gchar* /*name*/, const gchar* owner,
                                   gpointer data) {
    StatusNotifierWatch& self = *static_cast<StatusNotifierWatch*>(data);
    // First, so that it is known once there is something to do with it.
    self.askForProcess(bus, owner);
    self.ask(bus);
}

void StatusNotifierWatch::vanished(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    static_cast<StatusNotifierWatch*>(data)->events_.host(false);
}

// The watcher tells of items as well, which change nothing.
void StatusNotifierWatch::hostsChanged(GDBusConnection* bus, const gchar* /*sender*/,
                                       const gchar* /*path*/, const gchar* /*interface*/,
                                       const gchar* signal, GVariant* /*parameters*/,
                                       gpointer data) {
    if (g_str_has_prefix(signal, "StatusNotifierHost") != FALSE) {
        static_cast<StatusNotifierWatch*>(data)->ask(bus);
    }
}

void StatusNotifierWatch::askForProcess(GDBusConnection* bus, const char* owner) {
    askBus(thread_, bus, "GetConnectionUnixProcessID", g_variant_new("(s)", owner), "(u)",
           &StatusNotifierWatch::processAnswered, this);
}

void StatusNotifierWatch::processAnswered(GObject* source, GAsyncResult* result, gpointer data) {
    StatusNotifierWatch& self = *static_cast<StatusNotifierWatch*>(data);
    self.thread_.endCall();
    auto* const bus = G_DBUS_CONNECTION(source);
    const Variant reply(g_dbus_connection_call_finish(bus, result, nullptr));
    if (self.bus_ == bus && reply) {
        guint32 process = 0;
        g_variant_get(reply.get(), "(u)", &process);
        self.events_.process(static_cast<pid_t>(process));
    }
}

void StatusNotifierWatch::ask(GDBusConnection* bus) {
    thread_.beginCall();
    g_dbus_connection_call(bus, kWatcher, kPath, "org.freedesktop.DBus.Properties", "Get",
                           g_variant_new("(ss)", kWatcher, kHostRegistered), G_VARIANT_TYPE("(v)"),
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, thread_.cancellable(),
                           &StatusNotifierWatch::answered, this);
}

void StatusNotifierWatch::answered(GObject* source, GAsyncResult* result, gpointer data) {
    StatusNotifierWatch& self = *static_cast<StatusNotifierWatch*>(data);
    self.thread_.endCall();
    auto* const bus = G_DBUS_CONNECTION(source);
    const Variant reply(g_dbus_connection_call_finish(bus, result, nullptr));
    if (self.bus_ != bus || !reply) {
        return;
    }
    GVariant* inner = nullptr;
    g_variant_get(reply.get(), "(v)", &inner);
    const Variant value(inner);
    self.events_.host(g_variant_is_of_type(inner, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                      g_variant_get_boolean(inner) != FALSE);
}

}  // namespace tavo
