#include "platform/linux/tray/StatusNotifierWatch.h"

#include <utility>

namespace tavo {
namespace {

constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";
constexpr char kPath[] = "/StatusNotifierWatcher";
constexpr char kHostRegistered[] = "IsStatusNotifierHostRegistered";

}  // namespace

StatusNotifierWatch::StatusNotifierWatch(SessionBus& bus, std::function<void(bool host)> host)
    : host_(std::move(host)),
      connections_(bus.follow([this](GDBusConnection* connection) { follow(connection); })) {}

void StatusNotifierWatch::follow(GDBusConnection* bus) {
    leave();
    if (bus == nullptr) {
        host_(false);
        return;
    }
    bus_ = bus;
    signals_ = g_dbus_connection_signal_subscribe(bus, kWatcher, kWatcher, nullptr, kPath, nullptr,
                                                  G_DBUS_SIGNAL_FLAGS_NONE,
                                                  &StatusNotifierWatch::signalled, this, nullptr);
    watch_ = g_bus_watch_name_on_connection(bus, kWatcher, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            &StatusNotifierWatch::appeared,
                                            &StatusNotifierWatch::vanished, this, nullptr);
}

void StatusNotifierWatch::leave() {
    calls_.cancel();
    if (bus_ != nullptr) {
        g_bus_unwatch_name(watch_);
        g_dbus_connection_signal_unsubscribe(bus_, signals_);
        bus_ = nullptr;
    }
}

void StatusNotifierWatch::appeared(GDBusConnection* /*bus*/, const gchar* /*name*/,
                                   const gchar* /*owner*/, gpointer data) {
    static_cast<StatusNotifierWatch*>(data)->askForHost();
}

void StatusNotifierWatch::vanished(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    static_cast<StatusNotifierWatch*>(data)->host_(false);
}

// Only the watcher's signals about hosts matter, not those about items.
void StatusNotifierWatch::signalled(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                                    const gchar* /*path*/, const gchar* /*interface*/,
                                    const gchar* signal, GVariant* /*parameters*/, gpointer data) {
    if (g_str_has_prefix(signal, "StatusNotifierHost") != FALSE) {
        static_cast<StatusNotifierWatch*>(data)->askForHost();
    }
}

void StatusNotifierWatch::askForHost() {
    calls_.call(bus_, {kWatcher, kPath, "org.freedesktop.DBus.Properties", "Get"},
                g_variant_new("(ss)", kWatcher, kHostRegistered), "(v)",
                [this](const Variant& reply, GError*) {
                    if (!reply) {
                        return;
                    }
                    GVariant* inner = nullptr;
                    g_variant_get(reply.get(), "(v)", &inner);
                    const Variant value(inner);
                    host_(g_variant_is_of_type(inner, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                          g_variant_get_boolean(inner) != FALSE);
                });
}

}  // namespace tavo
