#include "platform/linux/opening/BusActivation.h"

#include <algorithm>
#include <memory>

#include "platform/linux/opening/LaunchErrorTexts.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kProcessPatience{1000};

using Done = std::function<void(Result<ActivatedService>)>;

std::string objectPath(const std::string& name) {
    std::string path = "/" + name;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
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

// Asks the bus daemon for the PID of the service.
void identify(OpeningThread& thread, const std::string& name, Done done) {
    thread.calls().call(
        thread.connection(), {kBusName, kBusPath, kBusName, "GetConnectionUnixProcessID"},
        g_variant_new("(s)", name.c_str()), "(u)",
        [done = std::move(done)](const Variant& reply, GError* error) {
            ActivatedService service{.runs = true};
            if (reply) {
                guint32 process = 0;
                g_variant_get(reply.get(), "(u)", &process);
                service.process = static_cast<std::int32_t>(process);
            } else {
                service.runs =
                    g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) == FALSE;
            }
            done(service);
        },
        kProcessPatience);
}

}  // namespace

void activateOverBus(OpeningThread& thread, const BusActivation& activation, Done done) {
    const std::string path = objectPath(activation.name);
    // Older toolkits look for a Wayland token in "desktop-startup-id", so the token is sent there,
    // too.
    const std::string& token = activation.activationToken;
    const std::string& id = activation.startupId.empty() ? token : activation.startupId;
    GVariant* const data = platformData(id, token);
    const char* const addresses[] = {activation.address.c_str()};
    const bool opens = !activation.address.empty();
    thread.calls().callStarting(
        thread.connection(),
        {activation.name.c_str(), path.c_str(), kApplicationInterface, opens ? "Open" : "Activate"},
        opens ? g_variant_new("(@as@a{sv})", g_variant_new_strv(addresses, 1), data)
              : g_variant_new("(@a{sv})", data),
        nullptr,
        [&thread, name = activation.name, done = std::move(done)](const Variant& reply,
                                                                  GError* error) {
            if (reply && thread.connection() == nullptr) {
                done(ActivatedService{.runs = true});  // the bus was lost since
            } else if (reply) {
                identify(thread, name, done);
            } else {
                done(failureOf(name, error));
            }
        },
        activation.patience);
}

}  // namespace tavo
