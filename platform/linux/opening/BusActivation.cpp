#include "platform/linux/opening/BusActivation.h"

#include <algorithm>
#include <memory>

#include "platform/linux/dbus/BusDaemonCalls.h"
#include "platform/linux/opening/LaunchErrors.h"

namespace tavo {
namespace {

struct Call {
    GLibThread& thread;
    std::string name;
    std::function<void(Result<ActivatedService>)> done;
};

using OwnedCall = std::unique_ptr<Call>;

std::string objectPath(const std::string& name) {
    std::string path = "/" + name;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

// Older toolkits look for a Wayland token where X11 has the startup id, so it is sent
// there, too.
GVariant* platformData(const BusActivation& activation) {
    GVariantBuilder data;
    g_variant_builder_init(&data, G_VARIANT_TYPE_VARDICT);
    const std::string& token = activation.activationToken;
    const std::string& id = activation.startupId.empty() ? token : activation.startupId;
    if (!id.empty()) {
        g_variant_builder_add(&data, "{sv}", "desktop-startup-id",
                              g_variant_new_string(id.c_str()));
    }
    if (!token.empty()) {
        g_variant_builder_add(&data, "{sv}", "activation-token",
                              g_variant_new_string(token.c_str()));
    }
    return g_variant_new("(a{sv})", &data);
}

Error failureOf(const std::string& name, GError* error) {
    const auto is = [error](GQuark domain, int code) {
        return g_error_matches(error, domain, code) != FALSE;
    };
    if (is(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
        is(G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
        return messages::serviceMissing(name);
    }
    if (is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT) || is(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) ||
        is(G_DBUS_ERROR, G_DBUS_ERROR_TIMED_OUT)) {
        return messages::activationUnanswered(name);
    }
    g_dbus_error_strip_remote_error(error);
    return messages::activationFailed(name, error->message);
}

bool isOver(const GError* error) {
    return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

// Receives the PID of the service from the bus.
void identified(GObject* bus, GAsyncResult* result, gpointer data) {
    const OwnedCall call(static_cast<Call*>(data));
    call->thread.endCall();
    GError* error = nullptr;
    ActivatedService service{.runs = true};
    if (GVariant* const reply =
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error)) {
        guint32 process = 0;
        g_variant_get(reply, "(u)", &process);
        service.process = static_cast<std::int32_t>(process);
        g_variant_unref(reply);
    } else {
        service.runs =
            g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) == FALSE;
    }
    if (error == nullptr || !isOver(error)) {
        call->done(service);
    }
    g_clear_error(&error);
}

void identify(GDBusConnection* bus, OwnedCall call) {
    constexpr std::chrono::milliseconds kPatience{1000};
    GLibThread& thread = call->thread;
    const std::string name = call->name;
    askBus(thread, bus, "GetConnectionUnixProcessID", g_variant_new("(s)", name.c_str()), "(u)",
           identified, call.release(), kPatience);
}

void answered(GObject* bus, GAsyncResult* result, gpointer data) {
    OwnedCall call(static_cast<Call*>(data));
    call->thread.endCall();
    GError* error = nullptr;
    GVariant* const reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);
    if (reply != nullptr) {
        g_variant_unref(reply);
        identify(G_DBUS_CONNECTION(bus), std::move(call));
        return;
    }
    if (!isOver(error)) {
        call->done(failureOf(call->name, error));
    }
    g_error_free(error);
}

}  // namespace

void activateOverBus(GLibThread& thread, const BusActivation& activation,
                     std::function<void(Result<ActivatedService>)> done) {
    auto call = OwnedCall(new Call{thread, activation.name, std::move(done)});
    thread.beginCall();
    g_dbus_connection_call(thread.connection(), activation.name.c_str(),
                           objectPath(activation.name).c_str(), "org.freedesktop.Application",
                           "Activate", platformData(activation), nullptr, G_DBUS_CALL_FLAGS_NONE,
                           static_cast<int>(activation.patience.count()), thread.cancellable(),
                           answered, call.release());
}

}  // namespace tavo
