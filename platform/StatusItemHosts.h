// Who on the desktop shows status items.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/StatusItemContent.h"
#include "support/Signal.h"

namespace tavo {

enum class StatusItemHost : std::uint8_t {
    None,
    Notifier,   // draws the item and its menu itself, and tells what the user did
    Embedding,  // gives the item a place for a window of its own
};

// In pixels of the screen, as the window system counts them.
struct PanelPlace {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

// Main thread.
class StatusItemHosts {
public:
    virtual ~StatusItemHosts() = default;

    // The best there is now; none as long as it is not known whether there is a better one.
    [[nodiscard]] virtual StatusItemHost host() const = 0;

    // Where the panel is that draws items itself; absent where the desktop does not tell, or does
    // not tell which of several it is. Once it was absent, `changed` tells when it may not be.
    [[nodiscard]] virtual std::optional<PanelPlace> panel() = 0;

    // host() or panel() may answer otherwise. Never inside a call.
    Signal<> changed;

    // Offers the item to panels of the Notifier kind, those that come later included, until
    // withdraw(). One item at a time.
    virtual void offer(StatusItemContent item) = 0;
    virtual void withdraw() = 0;

    // Other images for the item that is offered.
    virtual void repaint(std::vector<StatusItemImage> images) = 0;

    // The user clicked on the item that is offered. Never inside a call.
    Signal<const StatusItemClick&> clicked;
};

}  // namespace tavo
