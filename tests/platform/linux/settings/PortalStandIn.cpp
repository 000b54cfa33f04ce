#include "tests/platform/linux/settings/PortalStandIn.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/linux/dbus/BusCalls.h"

namespace tavo {
namespace {

constexpr char kName[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kInterface[] = "org.freedesktop.portal.Settings";

constexpr char kDescription[] =
    "<node><interface name='org.freedesktop.portal.Settings'>"
    "<method name='ReadAll'><arg type='as' direction='in'/>"
    "<arg type='a{sa{sv}}' direction='out'/></method>"
    "</interface></node>";

GVariant* parsed(const std::string& text) {
    GError* error = nullptr;
    GVariant* const value = g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, &error);
    EXPECT_NE(value, nullptr) << text << ": " << error->message;
    return value;
}

}  // namespace

PortalStandIn::PortalStandIn() {
    thread_.postAndWait([this] {
        GError* error = nullptr;
        bus_ = g_dbus_connection_new_for_address_sync(
            std::getenv("DBUS_SESSION_BUS_ADDRESS"),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error);
        ASSERT_NE(bus_, nullptr) << error->message;
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
        const GDBusInterfaceVTable table = {&PortalStandIn::called, nullptr, nullptr, {}};
        g_dbus_connection_register_object(bus_, kPath, node->interfaces[0], &table, this, nullptr,
                                          nullptr);
        g_dbus_node_info_unref(node);
    });
}

PortalStandIn::~PortalStandIn() {
    releaseAnswers();
    thread_.postAndWait([this] {
        g_dbus_connection_close_sync(bus_, nullptr, nullptr);
        g_object_unref(bus_);
    });
}

void PortalStandIn::callBus(const char* method, GVariant* parameters) {
    GError* error = nullptr;
    GVariant* const reply =
        g_dbus_connection_call_sync(bus_, kBusName, kBusPath, kBusName, method, parameters, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    ASSERT_NE(reply, nullptr) << error->message;
    g_variant_unref(reply);
}

void PortalStandIn::enter() {
    thread_.postAndWait([this] { callBus("RequestName", g_variant_new("(su)", kName, 0U)); });
}

void PortalStandIn::leave() {
    thread_.postAndWait([this] { callBus("ReleaseName", g_variant_new("(s)", kName)); });
}

void PortalStandIn::set(const std::string& group, const std::string& name, const std::string& value,
                        bool told) {
    thread_.postAndWait([&] { values_[{group, name}] = value; });
    if (told) {
        say("('" + group + "', '" + name + "', <" + value + ">)");
    }
}

void PortalStandIn::say(const std::string& parameters) {
    thread_.postAndWait([&] {
        GError* error = nullptr;
        g_dbus_connection_emit_signal(bus_, nullptr, kPath, kInterface, "SettingChanged",
                                      parsed(parameters), &error);
        ASSERT_EQ(error, nullptr) << error->message;
        g_dbus_connection_flush_sync(bus_, nullptr, nullptr);
    });
}

void PortalStandIn::haveNoSettings() {
    thread_.postAndWait([this] { has_ = false; });
}

void PortalStandIn::holdAnswers() {
    thread_.postAndWait([this] { holding_ = true; });
}

void PortalStandIn::releaseAnswers() {
    thread_.postAndWait([this] {
        holding_ = false;
        for (GDBusMethodInvocation* const invocation : std::exchange(held_, {})) {
            answer(invocation);
        }
        g_dbus_connection_flush_sync(bus_, nullptr, nullptr);
    });
}

int PortalStandIn::questions() {
    int count = 0;
    thread_.postAndWait([&] { count = questions_; });
    return count;
}

void PortalStandIn::called(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                           const gchar* /*interface*/, const gchar* /*method*/,
                           GVariant* /*parameters*/, GDBusMethodInvocation* invocation,
                           gpointer data) {
    PortalStandIn& self = *static_cast<PortalStandIn*>(data);
    ++self.questions_;
    if (self.holding_) {
        self.held_.push_back(invocation);
    } else {
        self.answer(invocation);
    }
}

void PortalStandIn::answer(GDBusMethodInvocation* invocation) {
    if (!has_) {
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.DBus.Error.UnknownMethod", "No such method");
        return;
    }
    GVariantIter* asked = nullptr;
    g_variant_get(g_dbus_method_invocation_get_parameters(invocation), "(as)", &asked);
    GVariantBuilder groups;
    g_variant_builder_init(&groups, G_VARIANT_TYPE("a{sa{sv}}"));
    const char* group = nullptr;
    while (g_variant_iter_loop(asked, "&s", &group) != FALSE) {
        g_variant_builder_open(&groups, G_VARIANT_TYPE("{sa{sv}}"));
        g_variant_builder_add(&groups, "s", group);
        g_variant_builder_open(&groups, G_VARIANT_TYPE("a{sv}"));
        for (const auto& [key, value] : values_) {
            if (key.first == group && !value.empty()) {
                g_variant_builder_add(&groups, "{sv}", key.second.c_str(), parsed(value));
            }
        }
        g_variant_builder_close(&groups);
        g_variant_builder_close(&groups);
    }
    g_variant_iter_free(asked);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(a{sa{sv}})", &groups));
}

}  // namespace tavo
