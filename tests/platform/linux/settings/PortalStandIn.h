// A settings portal for a test, which decides what it answers.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// Connects to the bus that DBUS_SESSION_BUS_ADDRESS names. Each function returns once the bus
// daemon has what it sends.
class PortalStandIn {
public:
    PortalStandIn();
    PortalStandIn(const PortalStandIn&) = delete;
    PortalStandIn& operator=(const PortalStandIn&) = delete;
    ~PortalStandIn();

    // Takes the portal's bus name; releases it.
    void enter();
    void leave();

    // Sets a key to a value in GVariant's text form, such as "uint32 1"; "" removes the key.
    // `told`: sends SettingChanged too.
    void set(const std::string& group, const std::string& name, const std::string& value,
             bool told = true);

    // Sends SettingChanged with these parameters in GVariant's text form.
    void say(const std::string& parameters);

    // Sets the methods that it has. At first: ReadOne and Read.
    void haveMethods(std::set<std::string> methods);

    // Holds the answers to all calls until releaseAnswers().
    void holdAnswers();
    void releaseAnswers();

    // The number of calls so far.
    [[nodiscard]] int questions();

private:
    static void called(GDBusConnection* bus, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data);
    void answer(GDBusMethodInvocation* invocation);
    void callBus(const char* method, GVariant* parameters);

    // The thread's.
    GDBusConnection* bus_ = nullptr;
    std::map<std::pair<std::string, std::string>, std::string> values_;
    std::set<std::string> methods_ = {"ReadOne", "Read"};
    std::vector<GDBusMethodInvocation*> held_;
    bool holding_ = false;
    int questions_ = 0;

    GLibThread thread_;
};

}  // namespace tavo
