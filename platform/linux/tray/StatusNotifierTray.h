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

// Follows the bus through loss and return. Main thread.
class StatusNotifierTray {
public:
    // Both outlive this.
    StatusNotifierTray(SessionBus& bus, MainQueue& mainQueue);
    StatusNotifierTray(const StatusNotifierTray&) = delete;
    StatusNotifierTray& operator=(const StatusNotifierTray&) = delete;
    ~StatusNotifierTray();

    // Whether a panel takes such items; absent until the bus has answered.
    [[nodiscard]] std::optional<bool> host() const { return host_; }

    // host() answers otherwise.
    Signal<> changed;

    // The user clicked on the item or chose from its menu.
    Signal<const StatusItemClick&> clicked;

    // The item is on each bus and panel that comes, until withdraw(). One item at a time.
    void offer(StatusItemContent item);
    void withdraw();

private:
    void setHost(bool host);

    SessionBus& bus_;
    std::optional<bool> host_;
    MainThreadPoster poster_;

    // The bus thread's.
    std::unique_ptr<StatusNotifierWatch> watch_;
    std::unique_ptr<StatusNotifierItem> item_;  // while it is offered
};

}  // namespace tavo
