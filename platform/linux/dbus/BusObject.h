// An object of this program on a bus, with one interface.
#pragma once

#include <functional>
#include <memory>

#include <gio/gio.h>

namespace tavo {

// GDBus itself refuses calls that do not fit the description. Use the object on one thread only:
// GDBus delivers calls on the thread that calls offer().
class BusObject {
public:
    struct Behaviour {
        // Answers the invocation, now or later.
        std::function<void(const char* method, GVariant* parameters,
                           GDBusMethodInvocation* invocation)>
            call;
        // The value of a property, floating; null when there is no such property. The function may
        // be empty when the description has no properties.
        std::function<GVariant*(const char* property)> property = {};
    };

    // `description`: the XML of a node with one interface (D-Bus Specification, "Introspection Data
    // Format").
    BusObject(const char* description, Behaviour behaviour);
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;
    ~BusObject() { withdraw(); }

    // Registers the object at `path`, and ends an earlier registration. The characters of `path`
    // must stay valid: only the pointer is kept.
    void offer(GDBusConnection* bus, const char* path);

    void withdraw();

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

// Answers with org.freedesktop.DBus.Error.InvalidArgs, for arguments of the right type whose values
// make no sense here.
void refuse(GDBusMethodInvocation* invocation, const char* why);

}  // namespace tavo
