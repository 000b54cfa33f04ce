// A program that a session bus starts to be activated, for tests.
//
// Arguments: the bus name; the file (a named pipe) that gets a line for each activation; and what
// to do then: "answer", "refuse", "silence", or, before it ever takes its name, "die".
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gio/gio.h>

namespace {

constexpr const char* kInterface =
    "<node><interface name='org.freedesktop.Application'>"
    "<method name='Activate'><arg type='a{sv}' name='data' direction='in'/></method>"
    "</interface></node>";

struct Service {
    std::string report;
    std::string behaviour;
};

void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
            GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data) {
    const Service& service = *static_cast<Service*>(data);
    GVariant* const platformData = g_variant_get_child_value(parameters, 0);
    const gchar* id = "";
    g_variant_lookup(platformData, "desktop-startup-id", "&s", &id);
    const gchar* token = "";
    g_variant_lookup(platformData, "activation-token", "&s", &token);
    std::ofstream(service.report) << method << " id=" << id << " token=" << token << std::endl;
    g_variant_unref(platformData);
    if (service.behaviour == "answer") {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else if (service.behaviour == "refuse") {
        g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                      "Not today");
    }
}

void connected(GDBusConnection* connection, const gchar* name, gpointer data) {
    GError* error = nullptr;
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterface, nullptr);
    static const GDBusInterfaceVTable kCalls = {called, nullptr, nullptr, {}};
    std::string path = std::string("/") + name;
    std::replace(path.begin(), path.end(), '.', '/');
    if (g_dbus_connection_register_object(connection, path.c_str(), node->interfaces[0], &kCalls,
                                          data, nullptr, &error) == 0) {
        std::fprintf(stderr, "%s\n", error->message);
        std::exit(2);
    }
    g_dbus_node_info_unref(node);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 || std::string(argv[3]) == "die") {
        return 3;
    }
    Service service{argv[2], argv[3]};
    g_bus_own_name(G_BUS_TYPE_SESSION, argv[1], G_BUS_NAME_OWNER_FLAGS_NONE, connected, nullptr,
                   nullptr, &service, nullptr);
    // Ends with the bus.
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
