// The menu of a status item, for panels to draw (com.canonical.dbusmenu, version 3).
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/StatusItemContent.h"
#include "platform/linux/dbus/BusObject.h"

namespace tavo {

// A menu that never changes and has no submenus. The root has id 0, the entries have the ids from 1
// on. Use on the thread that calls offer().
class DBusMenu {
public:
    // `chosen` is called with the index of the entry that the user chose, never with that of a
    // separator.
    DBusMenu(std::vector<StatusItemMenuEntry> entries, std::function<void(std::size_t)> chosen);

    void offer(GDBusConnection* bus, const char* path) { object_.offer(bus, path); }
    void withdraw() { object_.withdraw(); }

private:
    void called(const std::string& method, GVariant* parameters,
                GDBusMethodInvocation* invocation) const;
    void getLayout(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void getGroupProperties(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void getProperty(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void event(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void eventGroup(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void aboutToShow(GVariant* parameters, GDBusMethodInvocation* invocation) const;
    void aboutToShowGroup(GVariant* parameters, GDBusMethodInvocation* invocation) const;

    [[nodiscard]] bool has(gint32 id) const;

    // One node of the layout, (ia{sv}av), with its children down to `depth` (-1: all).
    [[nodiscard]] GVariant* node(gint32 id, gint32 depth, GVariant* names) const;

    // The properties of an entry, a{sv}: those that `names` lists, or all if it is empty.
    [[nodiscard]] GVariant* properties(gint32 id, GVariant* names) const;

    // Handles an event on an entry, such as "clicked". False when there is no such entry.
    [[nodiscard]] bool take(gint32 id, const std::string& event) const;

    const std::vector<StatusItemMenuEntry> entries_;
    const std::function<void(std::size_t)> chosen_;
    BusObject object_;
};

}  // namespace tavo
