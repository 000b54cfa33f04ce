#include "platform/linux/x11/XcbPanels.h"

#include <QCoreApplication>
#include <algorithm>
#include <utility>

#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/x11/XcbRequests.h"

namespace tavo {
namespace {

constexpr std::uint8_t kSentByOthers = 0x80;

}  // namespace

XcbPanels::XcbPanels(xcb_connection_t* connection, std::function<void()> changed)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
      changed_(std::move(changed)) {
    // One screen is all that X servers have had for decades.
    constexpr std::array<const char*, kAtoms> kNames = {
        "_NET_SYSTEM_TRAY_S0",      "MANAGER",    "_NET_CLIENT_LIST", "_NET_WM_WINDOW_TYPE",
        "_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_PID"};
    atoms_ = XcbRequests(connection_).atoms(kNames);
    hearOfManagers();
    qApp->installNativeEventFilter(this);
}

XcbPanels::~XcbPanels() {
    qApp->removeNativeEventFilter(this);
}

bool XcbPanels::trayThere() const {
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, atoms_[kTray]), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

std::optional<PanelPlace> XcbPanels::panelOf(pid_t process) {
    const XcbRequests x11(connection_);
    std::vector<xcb_window_t> docks =
        x11.numbers(x11.property(root_, atoms_[kClientList], XCB_ATOM_WINDOW));
    std::erase_if(docks, [this](xcb_window_t window) { return !isDock(window); });
    const pid_t parent = processParent(process);
    const auto own = std::find_if(docks.begin(), docks.end(), [&](xcb_window_t window) {
        return shownBy(window, process) || shownBy(window, parent);
    });
    std::optional<PanelPlace> place;
    if (own != docks.end()) {
        place = placeOf(*own);
    } else if (docks.size() == 1) {
        place = placeOf(docks.front());
    }
    soughtInVain_ = !place;
    return place;
}

bool XcbPanels::isDock(xcb_window_t window) const {
    const XcbRequests x11(connection_);
    const auto types = x11.numbers(x11.property(window, atoms_[kWindowType], XCB_ATOM_ATOM));
    return std::find(types.begin(), types.end(), atoms_[kDock]) != types.end();
}

bool XcbPanels::shownBy(xcb_window_t window, pid_t process) const {
    const XcbRequests x11(connection_);
    const auto said = x11.numbers(x11.property(window, atoms_[kProcess], XCB_ATOM_CARDINAL));
    return process > 0 && !said.empty() && said.front() == static_cast<std::uint32_t>(process);
}

std::optional<PanelPlace> XcbPanels::placeOf(xcb_window_t window) const {
    const XcbReply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    const XcbReply<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, window, root_, 0, 0), nullptr));
    if (!size || !corner) {
        return std::nullopt;
    }
    return PanelPlace{corner->dst_x, corner->dst_y, size->width, size->height};
}

// A new tray says so to whoever listens to the root window; the toolkit may listen to it for other
// reasons.
void XcbPanels::hearOfManagers() const {
    const XcbReply<xcb_get_window_attributes_reply_t> now(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, root_), nullptr));
    if (now) {
        const std::uint32_t mask =
            now->your_event_mask | std::uint32_t{XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
    }
}

bool XcbPanels::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (type != "xcb_generic_event_t") {
        return false;
    }
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    bool news = false;
    switch (event->response_type & ~kSentByOthers) {
        case XCB_CLIENT_MESSAGE: {
            const auto* const said = reinterpret_cast<const xcb_client_message_event_t*>(event);
            news = said->type == atoms_[kManager] && said->data.data32[1] == atoms_[kTray];
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto* const said = reinterpret_cast<const xcb_property_notify_event_t*>(event);
            news = soughtInVain_ && said->atom == atoms_[kClientList];
            break;
        }
        default:
            break;
    }
    if (news) {
        changed_();
    }
    return false;
}

}  // namespace tavo
