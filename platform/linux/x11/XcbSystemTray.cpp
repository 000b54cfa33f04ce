#include "platform/linux/x11/XcbSystemTray.h"

#include <QCoreApplication>
#include <array>
#include <utility>

namespace tavo {
namespace {

// This bit is set in the type of an event that a client has sent.
constexpr std::uint8_t kSentByClient = 0x80;

}  // namespace

XcbSystemTray::XcbSystemTray(xcb_connection_t* connection, std::function<void()> appeared)
    : x11_(connection), appeared_(std::move(appeared)) {
    // A tray owns the selection of its screen. X11 servers have had one screen for decades.
    constexpr std::array<const char*, kAtoms> kNames = {"_NET_SYSTEM_TRAY_S0", "MANAGER"};
    atoms_ = x11_.atoms(kNames);
    // A new tray sends MANAGER to the root window, to clients that select its structure events. Qt
    // may have selected other events on this connection, which are kept.
    const auto now = x11_.reply<xcb_get_window_attributes_reply_t>(
        xcb_get_window_attributes(x11_.get(), x11_.root()));
    if (now) {
        const std::uint32_t mask =
            now->your_event_mask | std::uint32_t{XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_change_window_attributes(x11_.get(), x11_.root(), XCB_CW_EVENT_MASK, &mask);
    }
    qApp->installNativeEventFilter(this);
}

XcbSystemTray::~XcbSystemTray() {
    qApp->removeNativeEventFilter(this);
}

bool XcbSystemTray::exists() const {
    const auto reply = x11_.reply<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(x11_.get(), atoms_[kTray]));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

bool XcbSystemTray::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (type == "xcb_generic_event_t") {
        const auto* const event = static_cast<const xcb_client_message_event_t*>(message);
        if ((event->response_type & ~kSentByClient) == XCB_CLIENT_MESSAGE &&
            event->type == atoms_[kManager] && event->data.data32[1] == atoms_[kTray]) {
            appeared_();
        }
    }
    return false;
}

}  // namespace tavo
