#include "platform/linux/dbus/BusObject.h"

#include <utility>

#include "platform/linux/dbus/GLibPointers.h"

namespace tavo {

BusObject::BusObject(const char* description, Behaviour behaviour)
    : description_(g_dbus_node_info_new_for_xml(description, nullptr), g_dbus_node_info_unref),
      behaviour_(std::move(behaviour)) {}

void BusObject::offer(GDBusConnection* bus, const char* path) {
    withdraw();
    static constexpr GDBusInterfaceVTable kCalls = {
        &BusObject::called, &BusObject::read, nullptr, {}};
    registration_ = g_dbus_connection_register_object(bus, path, description_->interfaces[0],
                                                      &kCalls, this, nullptr, nullptr);
    bus_ = bus;
    path_ = path;
}

void BusObject::withdraw() {
    if (registration_ != 0) {
        g_dbus_connection_unregister_object(bus_, std::exchange(registration_, 0));
    }
    bus_ = nullptr;
}

void BusObject::called(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                       const gchar* /*interface*/, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data) {
    static_cast<BusObject*>(data)->behaviour_.call(method, parameters, invocation);
}

GVariant* BusObject::read(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                          const gchar* /*interface*/, const gchar* property, GError** error,
                          gpointer data) {
    GVariant* const value = static_cast<BusObject*>(data)->behaviour_.property(property);
    if (value == nullptr) {
        g_set_error(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "No property %s", property);
    }
    return value;
}

void refuse(GDBusMethodInvocation* invocation, const char* why) {
    g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR,
                                                  G_DBUS_ERROR_INVALID_ARGS, why);
}

}  // namespace tavo
