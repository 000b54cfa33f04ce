// Stands in for a user's systemd, for tests: owns its name on the session bus and takes requests
// for scopes.
//
// Arguments: the file (a named pipe) that gets a line for each request; and what to do then:
// "answer", "refuse" or "silence". Says "ready" on standard output once it has the name.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gio/gio.h>

namespace {

constexpr const char* kInterface =
    "<node><interface name='org.freedesktop.systemd1.Manager'><method name='StartTransientUnit'>"
    "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='a(sv)' direction='in'/><arg type='a(sa(sv))' direction='in'/>"
    "<arg type='o' direction='out'/></method></interface></node>";

struct Manager {
    std::string report;
    std::string behaviour;
};

void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
            GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data) {
    const Manager& manager = *static_cast<Manager*>(data);
    GVariant* const properties = g_variant_get_child_value(parameters, 2);
    gchar* const text = g_variant_print(properties, FALSE);
    const gchar* name = nullptr;
    const gchar* mode = nullptr;
    g_variant_get_child(parameters, 0, "&s", &name);
    g_variant_get_child(parameters, 1, "&s", &mode);
    std::ofstream(manager.report) << name << ' ' << mode << ' ' << text << std::endl;
    g_free(text);
    g_variant_unref(properties);
    if (manager.behaviour == "answer") {
        g_dbus_method_invocation_return_value(
            invocation, g_variant_new("(o)", "/org/freedesktop/systemd1/job/1"));
    } else if (manager.behaviour == "refuse") {
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.systemd1.UnitExists", "Not that one");
    }
}

void connected(GDBusConnection* connection, const gchar*, gpointer data) {
    GError* error = nullptr;
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterface, nullptr);
    static const GDBusInterfaceVTable kCalls = {called, nullptr, nullptr, {}};
    if (g_dbus_connection_register_object(connection, "/org/freedesktop/systemd1",
                                          node->interfaces[0], &kCalls, data, nullptr,
                                          &error) == 0) {
        std::fprintf(stderr, "%s\n", error->message);
        std::exit(2);
    }
    g_dbus_node_info_unref(node);
}

void owned(GDBusConnection*, const gchar*, gpointer) {
    std::puts("ready");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 3;
    }
    Manager manager{argv[1], argv[2]};
    g_bus_own_name(G_BUS_TYPE_SESSION, "org.freedesktop.systemd1", G_BUS_NAME_OWNER_FLAGS_NONE,
                   connected, owned, nullptr, &manager, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
