// Who on the desktop shows status items.
#pragma once

#include <cstdint>

#include "platform/StatusItemContent.h"
#include "support/Signal.h"

namespace tavo {

enum class StatusItemHost : std::uint8_t {
    None,
    Notifier,   // draws the item and its menu itself, and tells what the user did
    Embedding,  // gives the item a place for a window of its own
};

// Main thread.
class StatusItemHosts {
public:
    virtual ~StatusItemHosts() = default;

    // The best there is now; none as long as it is not known whether there is a better one.
    [[nodiscard]] virtual StatusItemHost host() const = 0;

    // host() may answer otherwise. Never inside a call.
    Signal<> changed;

    // Offers the item to panels of the Notifier kind, those that come later included, until
    // withdraw(). One item at a time.
    virtual void offer(StatusItemContent item) = 0;
    virtual void withdraw() = 0;

    // The user clicked on the item that is offered. Never inside a call.
    Signal<const StatusItemClick&> clicked;
};

}  // namespace tavo
