#include "platform/linux/x11/XcbWindows.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <poll.h>

#include <strings.h>
#include <xcb/res.h>

#include "platform/linux/system/HostName.h"

namespace tavo {
namespace {

constexpr std::array kAtomNames = {
    "_NET_CLIENT_LIST_STACKING",
    "_NET_CLIENT_LIST",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_ACTIVE_WINDOW",
    "_NET_CURRENT_DESKTOP",
    "_NET_WM_DESKTOP",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_USER_TIME",
    "_NET_WM_USER_TIME_WINDOW",
    "_GTK_APPLICATION_ID",
    "_KDE_NET_WM_DESKTOP_FILE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DND",
};

// Longer than any name in a desktop entry, so a longer name of a window matches no entry.
constexpr std::uint32_t kLongestText = 1024;  // bytes
constexpr std::uint32_t kLongestList = 64;    // atoms
constexpr std::uint32_t kMostWindows = 8192;

constexpr std::uint32_t kAllDesktops = 0xffffffff;

// Stands for the PID of a process on another host.
constexpr pid_t kElsewhere = -1;

// Source indication of requests that a pager sends for the user.
constexpr std::uint32_t kFromUser = 2;

// Waits until the window manager has made `condition` true, 0.1 s at most.
template<typename Condition>
void await(const Condition& condition) {
    constexpr int kRounds = 50;
    constexpr int kPause = 2;  // milliseconds
    for (int round = 0; round < kRounds && !condition(); ++round) {
        ::poll(nullptr, 0, kPause);
    }
}

}  // namespace

// Requests for the properties of one window.
struct XcbWindows::Cookies {
    xcb_get_property_cookie_t names;
    xcb_get_property_cookie_t gtkApplication;
    xcb_get_property_cookie_t kdeDesktopFile;
    xcb_get_property_cookie_t process;
    xcb_get_property_cookie_t machine;
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t transientFor;
};

struct XcbWindows::Place {
    std::uint32_t desktop = kAllDesktops;
    bool hidden = false;
    bool gone = false;
};

const XcbWindow* XcbWindowList::find(xcb_window_t window) const {
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const XcbWindow& known) { return known.id == window; });
    return found == windows.end() ? nullptr : &*found;
}

XcbWindows::XcbWindows(XcbConnection& connection) : connection_(connection), host_(hostName()) {
    static_assert(kAtomNames.size() == kAtomCount);
    connection_.beginExchange();
    xcb_prefetch_extension_data(connection_.get(), &xcb_res_id);
    atoms_ = connection_.atoms(kAtomNames);
    if (!works()) {
        return;
    }
    // Does not wait: the extension was asked for before the atoms.
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(connection_.get(), &xcb_res_id);
    if (extension != nullptr && extension->present != 0) {
        const auto version = connection_.reply<xcb_res_query_version_reply_t>(
            xcb_res_query_version(connection_.get(), 1, 2));
        knowsClients_ = version && (version->server_major > 1 ||
                                    (version->server_major == 1 && version->server_minor >= 2));
    }
}

XcbWindows::Cookies XcbWindows::askAbout(xcb_window_t window) const {
    return {connection_.property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, kLongestText),
            connection_.property(window, atom(kGtkApplicationId), XCB_GET_PROPERTY_TYPE_ANY,
                                 kLongestText),
            connection_.property(window, atom(kKdeDesktopFile), XCB_GET_PROPERTY_TYPE_ANY,
                                 kLongestText),
            connection_.property(window, atom(kWmPid), XCB_ATOM_CARDINAL, 4),
            connection_.property(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_GET_PROPERTY_TYPE_ANY,
                                 kLongestText),
            connection_.property(window, atom(kWindowType), XCB_ATOM_ATOM, kLongestList * 4),
            connection_.property(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 4)};
}

void XcbWindows::read(const Cookies& cookies, XcbWindow& window) {
    const std::string names = connection_.text(cookies.names);
    const std::size_t end = names.find('\0');
    window.names.instance = names.substr(0, end);
    if (end != std::string::npos) {
        window.names.className = names.substr(end + 1, names.find('\0', end + 1) - end - 1);
    }
    window.names.appId = connection_.text(cookies.gtkApplication);
    const std::string desktopFile = connection_.text(cookies.kdeDesktopFile);
    if (window.names.appId.empty()) {
        window.names.appId = desktopFile;
    }
    const auto process = static_cast<pid_t>(connection_.number(cookies.process).value_or(0));
    const std::string machine = connection_.text(cookies.machine);
    // A PID without a host name may be another host's: it counts only if the server confirms it.
    const bool here = machine.empty() ? process == 0 || knowsClients_
                                      : ::strcasecmp(machine.c_str(), host_.c_str()) == 0;
    window.process = here ? process : kElsewhere;
    for (const std::uint32_t type : connection_.numbers(cookies.type)) {
        const auto known = std::find(atoms_.begin() + kTypeDesktop, atoms_.end(), type);
        window.ofDesktop = window.ofDesktop || known != atoms_.end();
    }
    window.transientFor = connection_.number(cookies.transientFor).value_or(XCB_WINDOW_NONE);
}

void XcbWindows::findProcesses(std::vector<XcbWindow>& windows) {
    // The bits of a window id that all windows of one client share.
    const std::uint32_t mask = ~xcb_get_setup(connection_.get())->resource_id_mask;
    std::unordered_map<std::uint32_t, pid_t> clients;
    if (knowsClients_) {
        std::vector<xcb_res_client_id_spec_t> specs;
        for (const XcbWindow& window : windows) {
            if (clients.try_emplace(window.id & mask, 0).second) {
                specs.push_back({window.id, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
            }
        }
        const auto reply =
            connection_.reply<xcb_res_query_client_ids_reply_t>(xcb_res_query_client_ids(
                connection_.get(), static_cast<std::uint32_t>(specs.size()), specs.data()));
        if (reply) {
            auto id = xcb_res_query_client_ids_ids_iterator(reply.get());
            for (; id.rem > 0; xcb_res_client_id_value_next(&id)) {
                if (xcb_res_client_id_value_value_length(id.data) > 0) {
                    clients[id.data->spec.client & mask] =
                        static_cast<pid_t>(*xcb_res_client_id_value_value(id.data));
                }
            }
        }
    }
    for (XcbWindow& window : windows) {
        const pid_t stated = window.process;
        window.process = stated == kElsewhere ? 0 : stated;
        if (knowsClients_) {
            const pid_t client = clients[window.id & mask];
            window.process = stated == 0 || stated == client ? client : 0;
        }
    }
}

XcbWindowList XcbWindows::list() {
    connection_.beginExchange();
    const xcb_window_t root = connection_.root();
    const auto stacking =
        connection_.property(root, atom(kClientListStacking), XCB_ATOM_WINDOW, kMostWindows * 4);
    const auto mapped =
        connection_.property(root, atom(kClientList), XCB_ATOM_WINDOW, kMostWindows * 4);
    const auto active = connection_.property(root, atom(kActiveWindow), XCB_ATOM_WINDOW, 4);
    const auto check = connection_.property(root, atom(kSupportingWmCheck), XCB_ATOM_WINDOW);
    std::vector<std::uint32_t> ids = connection_.numbers(stacking);
    // xfwm4 4.18 leaves an only window out of _NET_CLIENT_LIST_STACKING, so it is taken from
    // _NET_CLIENT_LIST.
    const std::unordered_set<std::uint32_t> stacked(ids.begin(), ids.end());
    for (const std::uint32_t id : connection_.numbers(mapped)) {
        if (!stacked.contains(id)) {
            ids.push_back(id);
        }
    }

    XcbWindowList list;
    list.active = connection_.number(active).value_or(XCB_WINDOW_NONE);
    list.managed = connection_.number(check).has_value();
    std::vector<Cookies> cookies;
    for (const std::uint32_t id : ids) {
        cookies.push_back(askAbout(id));
        list.windows.emplace_back().id = id;
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
        read(cookies[i], list.windows[i]);
    }
    findProcesses(list.windows);
    for (XcbWindow& window : list.windows) {
        if (window.transientFor != XCB_WINDOW_NONE) {
            window.parent = list.find(window.transientFor);
        }
    }
    return list;
}

xcb_get_property_cookie_t XcbWindows::askActive() const {
    const auto cookie =
        connection_.property(connection_.root(), atom(kActiveWindow), XCB_ATOM_WINDOW, 4);
    xcb_flush(connection_.get());
    return cookie;
}

xcb_window_t XcbWindows::active(xcb_get_property_cookie_t asked) {
    connection_.beginExchange();
    return connection_.number(asked).value_or(XCB_WINDOW_NONE);
}

std::optional<xcb_timestamp_t> XcbWindows::userTime(xcb_window_t window) {
    connection_.beginExchange();
    const auto here = connection_.property(window, atom(kUserTime), XCB_ATOM_CARDINAL, 4);
    const auto elsewhere = connection_.property(window, atom(kUserTimeWindow), XCB_ATOM_WINDOW, 4);
    const auto time = connection_.number(here);
    const auto holder = connection_.number(elsewhere);
    return holder ? connection_.number(
                        connection_.property(*holder, atom(kUserTime), XCB_ATOM_CARDINAL, 4))
                  : time;
}

std::vector<XcbWindows::Place> XcbWindows::places(const std::vector<xcb_window_t>& windows) {
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        cookies.emplace_back(
            connection_.property(window, atom(kWmDesktop), XCB_ATOM_CARDINAL, 4),
            connection_.property(window, atom(kWmState), XCB_ATOM_ATOM, kLongestList * 4));
    }
    std::vector<Place> places;
    for (const auto& [desktop, state] : cookies) {
        Place& place = places.emplace_back();
        const auto reply = connection_.reply<xcb_get_property_reply_t>(desktop);
        place.gone = reply == nullptr;
        const std::vector<std::uint32_t> desktops = numbersOf(reply.get());
        place.desktop = desktops.empty() ? kAllDesktops : desktops.front();
        const std::vector<std::uint32_t> states = connection_.numbers(state);
        place.hidden = std::find(states.begin(), states.end(), atom(kStateHidden)) != states.end();
    }
    return places;
}

void XcbWindows::goToDesktop(std::uint32_t desktop) {
    const xcb_timestamp_t time = connection_.now().value_or(XCB_CURRENT_TIME);
    connection_.tellManager(connection_.root(), atom(kCurrentDesktop), {desktop, time});
    await([&] {
        return connection_.number(connection_.property(connection_.root(), atom(kCurrentDesktop),
                                                       XCB_ATOM_CARDINAL, 4)) == desktop;
    });
}

void XcbWindows::activate(xcb_window_t window) {
    if (const auto time = connection_.now()) {
        connection_.tellManager(window, atom(kActiveWindow), {kFromUser, *time});
    }
}

void XcbWindows::restore(const std::vector<xcb_window_t>& windows, xcb_window_t top) {
    const auto active = [this] {
        return connection_.number(
            connection_.property(connection_.root(), atom(kActiveWindow), XCB_ATOM_WINDOW, 4));
    };
    const bool wasActive = active() == top;
    for (const xcb_window_t window : windows) {
        activate(window);
    }
    xcb_flush(connection_.get());
    if (wasActive) {
        await([&] { return active() != top; });
    }
}

// Asks by an event to the window manager. The server refuses a ConfigureWindow request with a
// sibling once window managers have put frames around both windows (ICCCM, "Configuring the
// Window").
void XcbWindows::placeAbove(xcb_window_t window, xcb_window_t sibling) {
    xcb_configure_request_event_t event = {};
    event.response_type = XCB_CONFIGURE_REQUEST;
    event.stack_mode = XCB_STACK_MODE_ABOVE;
    event.parent = connection_.root();
    event.window = window;
    event.sibling = sibling;
    event.value_mask = XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE;
    xcb_send_event(connection_.get(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
}

void XcbWindows::front(const std::vector<xcb_window_t>& windows) {
    connection_.beginExchange();
    const auto current =
        connection_.property(connection_.root(), atom(kCurrentDesktop), XCB_ATOM_CARDINAL, 4);
    const std::vector<Place> at = places(windows);
    const auto top =
        std::find_if(at.rbegin(), at.rend(), [](const Place& place) { return !place.gone; });
    // All are gone, or the server does not answer.
    if (top == at.rend()) {
        return;
    }
    std::uint32_t desktop = connection_.number(current).value_or(kAllDesktops);
    const auto isThere = [&](const Place& place) {
        return !place.gone && (desktop == kAllDesktops || place.desktop == desktop ||
                               place.desktop == kAllDesktops);
    };
    if (std::none_of(at.begin(), at.end(), isThere)) {
        desktop = top->desktop;
        goToDesktop(desktop);
    }
    std::vector<xcb_window_t> here;
    std::vector<xcb_window_t> hidden;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (isThere(at[i])) {
            here.push_back(windows[i]);
            if (at[i].hidden) {
                hidden.push_back(windows[i]);
            }
        }
    }
    if (!hidden.empty() && hidden.back() == here.back()) {
        hidden.pop_back();
    }
    if (!hidden.empty()) {
        restore(hidden, here.back());
    }
    const xcb_window_t front = here.back();
    activate(front);
    // Each other window is placed above the one before it, because some managers give the focus to
    // a window that is raised above all. Managers that raise it above all nevertheless keep the
    // order, since the window in front comes last.
    xcb_window_t below = front;
    for (const xcb_window_t window : here) {
        if (window != front) {
            placeAbove(window, std::exchange(below, window));
        }
    }
    if (here.size() > 1) {
        activate(front);
    }
    xcb_flush(connection_.get());
}

}  // namespace tavo
