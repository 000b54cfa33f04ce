// An object of ours on a bus.
#pragma once

#include <functional>
#include <memory>

#include <gio/gio.h>

namespace tavo {

// One interface of it. Calls that do not fit the description are answered with an error before
// they come here. Everything happens on the thread that offers it, in its own event loop.
class BusObject {
public:
    struct Behaviour {
        // Answers the invocation.
        std::function<void(const char* method, GVariant* parameters,
                           GDBusMethodInvocation* invocation)>
            call;
        // The value of a property; null when there is none.
        std::function<GVariant*(const char* property)> property;
    };

    // `description`: a node with one interface (D-Bus Specification, "Introspection Data Format").
    BusObject(const char* description, Behaviour behaviour);
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;
    ~BusObject() { withdraw(); }

    // In one place at a time.
    void offer(GDBusConnection* bus, const char* path);

    void withdraw();

    // Tells everybody, where it is offered. Takes floating parameters; null for none.
    void emit(const char* signal, GVariant* parameters);

private:
    static void called(GDBusConnection* bus, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data);
    static GVariant* read(GDBusConnection* bus, const gchar* sender, const gchar* path,
                          const gchar* interface, const gchar* property, GError** error,
                          gpointer data);

    const std::unique_ptr<GDBusNodeInfo, decltype(&g_dbus_node_info_unref)> description_;
    const Behaviour behaviour_;
    GDBusConnection* bus_ = nullptr;  // while it is offered
    const char* path_ = nullptr;
    guint registration_ = 0;
};

// Answers with the standard error for arguments of the right type that mean nothing here.
void refuse(GDBusMethodInvocation* invocation, const char* why);

}  // namespace tavo
