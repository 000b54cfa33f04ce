// Our status item on the bus, for panels to draw (the StatusNotifierItem specification, with the
// names of KDE that are in use everywhere).
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include <gio/gio.h>

#include "platform/StatusItemContent.h"
#include "platform/linux/dbus/BusObject.h"
#include "platform/linux/tray/DBusMenu.h"

namespace tavo {

// Everything happens on the thread that it is made on.
class StatusNotifierItem {
public:
    using Clock = std::chrono::steady_clock;

    // `clicked` hears what the user did. A token that the panel hands over goes with the click that
    // comes next, if that comes within five seconds: the user may choose from the menu first. No
    // other click gets it. `now` tells the time.
    StatusNotifierItem(StatusItemContent item, std::function<void(const StatusItemClick&)> clicked,
                       std::function<Clock::time_point()> now = Clock::now);
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;
    ~StatusNotifierItem() { leave(); }

    // Offers the item on this bus until leave(), to the watcher that is there and to each that
    // comes later. One bus at a time.
    void follow(GDBusConnection* bus);

    // Panels take it for gone then.
    void leave();

    void repaint(std::vector<StatusItemImage> images);

private:
    static void watcherAppeared(GDBusConnection* bus, const gchar* name, const gchar* owner,
                                gpointer data);

    void called(const std::string& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    [[nodiscard]] GVariant* property(const std::string& name) const;
    void click(std::optional<std::size_t> entry);

    StatusItemContent item_;
    const std::function<void(const StatusItemClick&)> clicked_;
    const std::function<Clock::time_point()> now_;
    // Of its own: panels drop an item when its name goes, and one that is made anew has another.
    const std::string name_;
    BusObject object_;
    DBusMenu menu_;
    std::string token_;
    Clock::time_point tokenCame_;
    GDBusConnection* bus_ = nullptr;  // while it is offered there
    guint watch_ = 0;
};

}  // namespace tavo
