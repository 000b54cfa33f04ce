// The program's StatusNotifierItem on the session bus, for panels to draw.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include <gio/gio.h>

#include "platform/StatusItemContent.h"
#include "platform/linux/dbus/BusObject.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/tray/DBusMenu.h"

namespace tavo {

// Offers itself on each new connection to the bus, to the watcher (org.kde.StatusNotifierWatcher)
// that is there and to each that comes later. Use on the bus thread.
class StatusNotifierItem {
public:
    using Clock = std::chrono::steady_clock;

    // `bus` must outlive this object. `clicked` is called when the user has clicked on the item or
    // on an entry of its menu. An activation token that the panel hands over goes with the next
    // click, if that comes within five seconds: the user may choose from the menu first. No later
    // click gets it. `now` tells the time.
    StatusNotifierItem(SessionBus& bus, StatusItemContent item,
                       std::function<void(const StatusItemClick&)> clicked,
                       std::function<Clock::time_point()> now = Clock::now);
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;
    // Panels remove the item when the connection to the bus ends.
    ~StatusNotifierItem() { leave(); }

private:
    static void watcherAppeared(GDBusConnection* bus, const gchar* name, const gchar* owner,
                                gpointer data);

    void follow(GDBusConnection* bus);
    void leave();
    void called(const std::string& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    [[nodiscard]] GVariant* property(const std::string& name) const;
    // Reports `click` with the token that holds for it.
    void click(StatusItemClick click);

    StatusItemContent item_;
    const std::function<void(const StatusItemClick&)> clicked_;
    const std::function<Clock::time_point()> now_;
    // By which panels may look for items.
    const std::string name_;
    BusObject object_;
    DBusMenu menu_;
    std::string token_;
    Clock::time_point tokenCame_;
    GDBusConnection* bus_ = nullptr;  // while it is offered there
    guint watch_ = 0;
    Subscription connections_;
};

}  // namespace tavo
