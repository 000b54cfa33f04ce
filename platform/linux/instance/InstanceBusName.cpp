#include "platform/linux/instance/InstanceBusName.h"

#include <string>
#include <utility>

#include "platform/linux/dbus/BusDaemonCalls.h"
#include "platform/linux/dbus/Variant.h"

namespace tavo {
namespace {

constexpr char kName[] = "org.tavolauncher.TavoLauncher";
constexpr char kPath[] = "/org/tavolauncher/TavoLauncher";
constexpr char kInterface[] = "org.freedesktop.Application";
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

// The owner may end between our asking and our calling it.
constexpr int kTries = 3;
constexpr int kPatienceMs = 2000;

std::string entry(GVariant* platformData, const char* key) {
    const char* value = nullptr;
    return g_variant_lookup(platformData, key, "&s", &value) != FALSE ? value : "";
}

void putIn(GVariantBuilder& platformData, const char* key, const std::string& value) {
    if (!value.empty() && g_utf8_validate(value.c_str(), -1, nullptr) != FALSE) {
        g_variant_builder_add(&platformData, "{sv}", key, g_variant_new_string(value.c_str()));
    }
}

}  // namespace

InstanceBusName::InstanceBusName(GLibThread& thread, StartRequest ours, Events events)
    : thread_(thread),
      ours_(std::move(ours)),
      events_(std::move(events)),
      description_(nullptr, g_dbus_node_info_unref) {}

InstanceBusName::~InstanceBusName() = default;

void InstanceBusName::claim(GDBusConnection* bus) {
    if (!description_) {
        description_.reset(g_dbus_node_info_new_for_xml(kDescription, nullptr));
    }
    // Before the name is ours: whoever waits for it calls at once.
    static constexpr GDBusInterfaceVTable kCalls = {&InstanceBusName::called, nullptr, nullptr, {}};
    g_dbus_connection_register_object(bus, kPath, description_->interfaces[0], &kCalls, this,
                                      nullptr, nullptr);
    triesLeft_ = kTries;
    askForName(bus);
}

void InstanceBusName::askForName(GDBusConnection* bus) {
    --triesLeft_;
    askBus(thread_, bus, "RequestName", g_variant_new("(su)", kName, kDoNotQueue), "(u)",
           &InstanceBusName::nameAnswered, this);
}

void InstanceBusName::nameAnswered(GObject* source, GAsyncResult* result, gpointer data) {
    InstanceBusName& self = *static_cast<InstanceBusName*>(data);
    self.thread_.endCall();
    auto* const bus = G_DBUS_CONNECTION(source);
    const Variant reply(g_dbus_connection_call_finish(bus, result, nullptr));
    if (self.ended_ || !reply) {
        return;
    }
    guint32 answer = 0;
    g_variant_get(reply.get(), "(u)", &answer);
    if (answer == kPrimaryOwner || answer == kAlreadyOwner) {
        self.events_.owned();
    } else {
        self.handOver(bus);
    }
}

void InstanceBusName::handOver(GDBusConnection* bus) {
    GVariantBuilder platformData;
    g_variant_builder_init(&platformData, G_VARIANT_TYPE_VARDICT);
    putIn(platformData, "desktop-startup-id", ours_.startupId);
    putIn(platformData, "activation-token", ours_.activationToken);
    thread_.beginCall();
    g_dbus_connection_call(bus, kName, kPath, kInterface, "Activate",
                           g_variant_new("(a{sv})", &platformData), nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, kPatienceMs, thread_.cancellable(),
                           &InstanceBusName::handedOver, this);
}

void InstanceBusName::handedOver(GObject* source, GAsyncResult* result, gpointer data) {
    InstanceBusName& self = *static_cast<InstanceBusName*>(data);
    self.thread_.endCall();
    auto* const bus = G_DBUS_CONNECTION(source);
    GError* error = nullptr;
    const Variant reply(g_dbus_connection_call_finish(bus, result, &error));
    // One that is too busy to answer has the call all the same.
    const bool taken = reply || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE;
    g_clear_error(&error);
    if (self.ended_ || g_dbus_connection_is_closed(bus) != FALSE) {
        return;
    }
    if (taken) {
        self.events_.superseded();
    } else if (self.triesLeft_ > 0) {
        self.askForName(bus);
    }
}

void InstanceBusName::called(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                             const gchar* /*path*/, const gchar* /*interface*/,
                             const gchar* /*method*/, GVariant* parameters,
                             GDBusMethodInvocation* invocation, gpointer data) {
    InstanceBusName& self = *static_cast<InstanceBusName*>(data);
    // Files and actions that a caller names mean nothing to a launcher: each of the methods shows
    // it. What the platform has to say comes last in all of them.
    const Variant platformData(
        g_variant_get_child_value(parameters, g_variant_n_children(parameters) - 1));
    const StartRequest request = {.startupId = entry(platformData.get(), "desktop-startup-id"),
                                  .activationToken = entry(platformData.get(), "activation-token")};
    if (self.ended_ || !self.events_.activated(request)) {
        g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.Failed",
                                                   "The launcher is ending");
    } else if (self.shows_) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        self.held_.push_back(invocation);
    }
}

void InstanceBusName::answerHeld() {
    shows_ = true;
    for (GDBusMethodInvocation* const invocation : std::exchange(held_, {})) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
}

void InstanceBusName::leave() {
    ended_ = true;
    // Unanswered: they hear of it when the connection closes, and the name is free by then.
    for (GDBusMethodInvocation* const invocation : std::exchange(held_, {})) {
        g_object_unref(invocation);
    }
}

}  // namespace tavo
