// A settings portal that says what a test tells it to.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

// On the session bus of this process, by a connection of its own. Every call returns once the bus
// knows of it.
class PortalStandIn {
public:
    PortalStandIn();
    PortalStandIn(const PortalStandIn&) = delete;
    PortalStandIn& operator=(const PortalStandIn&) = delete;
    ~PortalStandIn();

    // Takes the portal's name on the bus; gives it up.
    void enter();
    void leave();

    // The value of a key in GVariant's text form, "uint32 1" for one, and whether programs are
    // told. "" takes the key away.
    void set(const std::string& group, const std::string& name, const std::string& value,
             bool told = true);

    // Sends SettingChanged with these parameters in GVariant's text form.
    void say(const std::string& parameters);

    // The methods it has; ReadOne and Read unless told otherwise.
    void haveMethods(std::set<std::string> methods);

    // Questions get no answer until they do again; those that came meanwhile are answered then.
    void holdAnswers();
    void releaseAnswers();

    // How many questions have come.
    [[nodiscard]] int questions();

private:
    static void called(GDBusConnection* bus, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer data);
    void answer(GDBusMethodInvocation* invocation);
    void callBus(const char* method, GVariant* parameters);

    // On the thread alone.
    GDBusConnection* bus_ = nullptr;
    std::map<std::pair<std::string, std::string>, std::string> values_;
    std::set<std::string> methods_ = {"ReadOne", "Read"};
    std::vector<GDBusMethodInvocation*> held_;
    bool holding_ = false;
    int questions_ = 0;

    GLibThread thread_;
};

}  // namespace tavo
