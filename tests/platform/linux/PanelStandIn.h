// A panel that draws status items, made up: the watcher that they register with.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/BusDaemon.h"
#include "platform/linux/BusObject.h"
#include "platform/linux/GioThread.h"
#include "platform/linux/Variant.h"
#include "tests/platform/linux/ProcessFixture.h"

namespace tavo::processes {

// A connection to the bus at `address`; ends with its scope.
class Client {
public:
    explicit Client(const std::string& address)
        : bus_(g_dbus_connection_new_for_address_sync(
              address.c_str(),
              static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
              nullptr, nullptr, nullptr)) {
        EXPECT_NE(bus_, nullptr);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        g_dbus_connection_close_sync(bus_, nullptr, nullptr);
        g_object_unref(bus_);
    }

    [[nodiscard]] GDBusConnection* bus() const { return bus_; }

    // Null for an error. Takes floating parameters.
    Variant call(const std::string& name, const char* path, const char* interface,
                 const char* method, GVariant* parameters) const {
        return Variant(g_dbus_connection_call_sync(
            bus_, name.c_str(), path, interface, method, parameters, nullptr,
            G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr));
    }

    // As text, in GLib's notation; "" for an error.
    [[nodiscard]] std::string property(const std::string& name, const char* path,
                                       const char* interface, const char* property) const {
        const Variant value = call(name, path, "org.freedesktop.DBus.Properties", "Get",
                                   g_variant_new("(ss)", interface, property));
        return value ? text(value.get()) : "";
    }

    static std::string text(GVariant* value) {
        const std::unique_ptr<gchar, decltype(&g_free)> printed(g_variant_print(value, FALSE),
                                                                g_free);
        return printed.get();
    }

private:
    GDBusConnection* bus_;
};

// Ends as a panel that crashes.
class PanelStandIn {
public:
    explicit PanelStandIn(const std::string& address)
        : client_(address),
          watcher_(
              kDescription,
              {.call =
                   [this](const char*, GVariant* parameters, GDBusMethodInvocation* invocation) {
                       take(parameters);
                       g_dbus_method_invocation_return_value(invocation, nullptr);
                   },
               .property = [](const char*) { return g_variant_new_boolean(TRUE); }}) {
        thread_.postAndWait([this] { watcher_.offer(client_.bus(), "/StatusNotifierWatcher"); });
        EXPECT_TRUE(
            client_.call(kBusName, kBusPath, kBusName, "RequestName",
                         g_variant_new("(su)", "org.kde.StatusNotifierWatcher", kDoNotQueue)));
    }
    PanelStandIn(const PanelStandIn&) = delete;
    PanelStandIn& operator=(const PanelStandIn&) = delete;
    ~PanelStandIn() {
        thread_.postAndWait([this] { watcher_.withdraw(); });
    }

    // The name of the latest item, once there have been `count`; "" when they do not come.
    std::string awaitItem(std::size_t count = 1) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, kPatience, [&] { return items_.size() >= count; });
        return items_.size() < count ? "" : items_.back();
    }

    [[nodiscard]] const Client& client() const { return client_; }

private:
    static constexpr char kDescription[] =
        "<node><interface name='org.kde.StatusNotifierWatcher'>"
        "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
        "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
        "</interface></node>";

    void take(GVariant* parameters) {
        const char* name = nullptr;
        g_variant_get(parameters, "(&s)", &name);
        const std::lock_guard lock(mutex_);
        items_.emplace_back(name);
        changed_.notify_all();
    }

    Client client_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> items_;
    BusObject watcher_;
    GioThread thread_;  // the last member: it uses the others
};

}  // namespace tavo::processes
