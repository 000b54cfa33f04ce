// The status item on panels that draw it themselves, over the session bus (the StatusNotifierItem
// specification, with the names of KDE that are in use everywhere).
#pragma once

#include <memory>
#include <optional>

#include "platform/MainThreadPoster.h"
#include "platform/StatusItemContent.h"
#include "support/Signal.h"

namespace tavo {

class SessionBus;
class StatusNotifierItem;
class StatusNotifierWatch;

// Follows the session bus when it is lost and when it returns. Main thread.
class StatusNotifierTray {
public:
    // `bus` and `mainQueue` must outlive this object.
    StatusNotifierTray(SessionBus& bus, MainQueue& mainQueue);
    StatusNotifierTray(const StatusNotifierTray&) = delete;
    StatusNotifierTray& operator=(const StatusNotifierTray&) = delete;
    ~StatusNotifierTray();

    // Whether a panel takes such items; absent until the bus has answered.
    [[nodiscard]] std::optional<bool> host() const { return host_; }

    // host() has changed.
    Signal<> changed;

    // The user clicked on the item or chose from its menu.
    Signal<const StatusItemClick&> clicked;

    // Offers the item to the panels that are there and to those that come later, until withdraw().
    // One item at a time.
    void offer(StatusItemContent item);
    void withdraw();

private:
    void setHost(bool host);

    SessionBus& bus_;
    std::optional<bool> host_;
    MainThreadPoster poster_;

    // The members below are used on the bus thread only.
    std::unique_ptr<StatusNotifierWatch> watch_;
    std::unique_ptr<StatusNotifierItem> item_;  // while it is offered
};

}  // namespace tavo
