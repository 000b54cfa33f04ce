// Whether a panel of the session shows the status item as a StatusNotifierItem, or an XEmbed tray
// does, or neither.
#pragma once

#include <cstdint>

#include "platform/StatusItemContent.h"
#include "support/Signal.h"

namespace tavo {

enum class StatusItemHost : std::uint8_t {
    None,
    Notifier,   // the panel draws the item and its menu and reports clicks (StatusNotifierItem)
    Embedding,  // the program draws the item into a window inside a tray (XEmbed)
};

// Main thread.
class StatusItemHosts {
public:
    virtual ~StatusItemHosts() = default;

    // The best kind that exists now. None until it is known whether there is a Notifier.
    [[nodiscard]] virtual StatusItemHost host() const = 0;

    // host() has changed. Never emitted inside a call.
    Signal<> changed;

    // Offers the item to all panels of the kind Notifier, also to those that appear later, until
    // withdraw(). One item at a time.
    virtual void offer(StatusItemContent item) = 0;
    virtual void withdraw() = 0;

    // The user clicked on the offered item. Never emitted inside a call.
    Signal<const StatusItemClick&> clicked;
};

}  // namespace tavo
