#include "platform/linux/instance/InstanceBusName.h"

#include <string>
#include <utility>

#include "support/ApplicationId.h"

namespace tavo {
namespace {

constexpr char kObjectPath[] = "/org/tavolauncher/TavoLauncher";
constexpr char kDescription[] =
    "<node><interface name='org.freedesktop.Application'>"
    "<method name='Activate'><arg type='a{sv}' direction='in'/></method>"
    "<method name='Open'><arg type='as' direction='in'/><arg type='a{sv}' direction='in'/></method>"
    "<method name='ActivateAction'><arg type='s' direction='in'/><arg type='av' direction='in'/>"
    "<arg type='a{sv}' direction='in'/></method>"
    "</interface></node>";

// D-Bus Specification, "org.freedesktop.DBus.RequestName".
constexpr guint32 kPrimaryOwner = 1;
constexpr guint32 kAlreadyOwner = 4;

// How often the name is asked for: its owner may end between the answer to RequestName and our call
// of it.
constexpr int kTries = 3;
constexpr std::chrono::milliseconds kOwnerPatience{2000};

std::string entry(GVariant* platformData, const char* key) {
    const char* value = nullptr;
    return g_variant_lookup(platformData, key, "&s", &value) != FALSE ? value : "";
}

}  // namespace

InstanceBusName::InstanceBusName(SessionBus& bus, StartRequest ours, Events events)
    : bus_(bus),
      ours_(std::move(ours)),
      events_(std::move(events)),
      object_(
          kDescription,
          {.call = [this](const char*, GVariant* parameters,
                          GDBusMethodInvocation* invocation) { called(parameters, invocation); }}),
      connections_(bus.follow([this](GDBusConnection* connection) { follow(connection); })) {}

InstanceBusName::~InstanceBusName() {
    if (bus_.connection() != nullptr) {
        callBus(bus_.connection(), "ReleaseName", g_variant_new("(s)", kApplicationId));
    }
    for (GDBusMethodInvocation* const invocation : waiting_) {
        g_object_unref(invocation);
    }
}

void InstanceBusName::follow(GDBusConnection* bus) {
    calls_.cancel();
    object_.withdraw();
    if (bus == nullptr) {
        events_.owned(false);
        return;
    }
    // The object comes before the name, because a caller that waits for the name calls it at once.
    object_.offer(bus, kObjectPath);
    triesLeft_ = kTries;
    askForName();
}

void InstanceBusName::askForName() {
    --triesLeft_;
    calls_.call(bus_.connection(), {kBusName, kBusPath, kBusName, "RequestName"},
                g_variant_new("(su)", kApplicationId, kDoNotQueue), "(u)",
                [this](const Variant& reply, GError*) {
                    if (!reply) {
                        return;
                    }
                    guint32 answer = 0;
                    g_variant_get(reply.get(), "(u)", &answer);
                    if (answer == kPrimaryOwner || answer == kAlreadyOwner) {
                        events_.owned(true);
                    } else {
                        handOver();
                    }
                });
}

void InstanceBusName::handOver() {
    calls_.call(
        bus_.connection(), {kApplicationId, kObjectPath, kApplicationInterface, "Activate"},
        g_variant_new("(@a{sv})", platformData(ours_.startupId, ours_.activationToken)), nullptr,
        [this](const Variant& reply, GError* error) {
            // An owner that is too busy to answer has received the call all the same.
            if (reply || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
                events_.superseded();
            } else if (triesLeft_ > 0) {
                askForName();
            }
        },
        kOwnerPatience);
}

// Files and actions mean nothing to a launcher, so each method just shows the launcher. The
// platform data is the last argument of each method.
void InstanceBusName::called(GVariant* parameters, GDBusMethodInvocation* invocation) {
    const Variant platformData(
        g_variant_get_child_value(parameters, g_variant_n_children(parameters) - 1));
    events_.activated({.startupId = entry(platformData.get(), "desktop-startup-id"),
                       .activationToken = entry(platformData.get(), "activation-token")});
    if (confirms_) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        waiting_.push_back(invocation);
    }
}

void InstanceBusName::confirmCallers() {
    confirms_ = true;
    for (GDBusMethodInvocation* const invocation : std::exchange(waiting_, {})) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
}

}  // namespace tavo
