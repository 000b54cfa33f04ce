// A settings portal for a test, which decides what it answers.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// Connects to the bus that DBUS_SESSION_BUS_ADDRESS names. Each function returns once the bus
// daemon has received what the function sends.
class PortalStandIn {
public:
    PortalStandIn();
    PortalStandIn(const PortalStandIn&) = delete;
    PortalStandIn& operator=(const PortalStandIn&) = delete;
    ~PortalStandIn();

    // enter() takes the portal's bus name, leave() releases it.
    void enter();
    void leave();

    // Gives a setting a value in GVariant's text form, such as "uint32 1"; "" removes it. Sends
    // SettingChanged if `told`.
    void set(const std::string& group, const std::string& name, const std::string& value,
             bool told = true);

    // Sends SettingChanged with these parameters in GVariant's text form.
    void say(const std::string& parameters);

    // Knows none of its methods any more.
    void haveNoSettings();

    // Holds the answers to all calls until releaseAnswers().
    void holdAnswers();
    void releaseAnswers();

    // How often the portal's methods were called so far.
    [[nodiscard]] int questions();

private:
    static void called(GDBusConnection* bus, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data);
    void answer(GDBusMethodInvocation* invocation);
    void callBus(const char* method, GVariant* parameters);

    // Used on `thread_` alone.
    GDBusConnection* bus_ = nullptr;
    std::map<std::pair<std::string, std::string>, std::string> values_;
    bool has_ = true;
    std::vector<GDBusMethodInvocation*> held_;
    bool holding_ = false;
    int questions_ = 0;

    GLibThread thread_;
};

}  // namespace tavo
