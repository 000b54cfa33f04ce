// The managed windows of an X11 desktop, and bringing some to the front (Extended
// Window Manager Hints 1.5; Inter-Client Communication Conventions Manual 2.0).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <sys/types.h>

#include <xcb/xcb.h>

#include "platform/linux/windows/WindowMatcher.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tavo {

struct XcbWindow {
    xcb_window_t id = XCB_WINDOW_NONE;
    WindowNames names;                            // empty where longer than 1024 bytes
    pid_t process = 0;                            // 0: not known, or not of this host
    xcb_window_t transientFor = XCB_WINDOW_NONE;  // WM_TRANSIENT_FOR
    const XcbWindow* parent = nullptr;            // the window transientFor, where it is listed
    bool ofDesktop = false;  // a panel, the desktop itself, a tool tip: no application's window
};

struct XcbWindowList {
    XcbWindowList() = default;
    XcbWindowList(XcbWindowList&&) = default;
    XcbWindowList(const XcbWindowList&) = delete;  // `parent` points into the list
    XcbWindowList& operator=(const XcbWindowList&) = delete;
    ~XcbWindowList() = default;

    bool managed = false;            // a window manager lists windows
    std::vector<XcbWindow> windows;  // the bottom one first
    xcb_window_t active = XCB_WINDOW_NONE;

    // Null for a window that is not listed.
    [[nodiscard]] const XcbWindow* find(xcb_window_t window) const;
};

// One thread at a time. Windows that vanish meanwhile are passed over, and properties of the wrong
// type or size count as missing.
class XcbWindows {
public:
    // `connection` must outlive it.
    explicit XcbWindows(XcbConnection& connection);

    // Whether the server has answered the constructor's request for atoms. If not, no other
    // function may be called.
    [[nodiscard]] bool works() const {
        return std::find(atoms_.begin(), atoms_.end(), xcb_atom_t{XCB_ATOM_NONE}) == atoms_.end();
    }

    // Takes three round trips, however many windows there are. A window's process is the one that
    // the server knows as its client (X-Resource extension). A window that names another process in
    // _NET_WM_PID, as from inside a container, or another host, has none. Where the server does not
    // know the client, _NET_WM_PID is taken.
    [[nodiscard]] XcbWindowList list();

    // Asks for the active window without waiting; active() waits for the reply.
    [[nodiscard]] xcb_get_property_cookie_t askActive() const;
    // The active window, from the reply to askActive(); XCB_WINDOW_NONE when there is none.
    [[nodiscard]] xcb_window_t active(xcb_get_property_cookie_t asked);

    // The server's time of the user's last input in `window` (_NET_WM_USER_TIME), where it is set.
    [[nodiscard]] std::optional<xcb_timestamp_t> userTime(xcb_window_t window);

    // Brings `windows` (the bottom one first) above all others, their order kept, and makes the
    // last one active. When none of them is on the current desktop, goes to the desktop of the last
    // one; windows on other desktops stay as they are. Minimised ones are restored. Returns when
    // everything is sent; going to another desktop, and the focus that restored windows take, are
    // waited for up to 0.1 s each.
    void front(const std::vector<xcb_window_t>& windows);

private:
    enum Atom : std::size_t {
        kClientListStacking,
        kClientList,
        kSupportingWmCheck,
        kActiveWindow,
        kCurrentDesktop,
        kWmDesktop,
        kWmState,
        kStateHidden,
        kWmPid,
        kWindowType,
        kUserTime,
        kUserTimeWindow,
        kGtkApplicationId,
        kKdeDesktopFile,
        kTypeDesktop,
        kTypeDock,
        kTypeToolTip,
        kTypeNotification,
        kTypeDropdownMenu,
        kTypePopupMenu,
        kTypeCombo,
        kTypeDnd,
        kAtomCount
    };
    struct Cookies;
    struct Place;

    [[nodiscard]] xcb_atom_t atom(Atom name) const { return atoms_[name]; }
    Cookies askAbout(xcb_window_t window) const;
    void read(const Cookies& cookies, XcbWindow& window);
    void findProcesses(std::vector<XcbWindow>& windows);
    // Returns when the desktop is the current one, or after 0.1 s: xfwm4 4.18 does not focus a
    // window that is restored on a desktop that is not yet the current one.
    void goToDesktop(std::uint32_t desktop);

    // Asks for `window` to be restored, raised and focused. Each request has the server's time of
    // its own: the window manager may have focused another window after the last one, and would
    // refuse an older time.
    void activate(xcb_window_t window);

    std::vector<Place> places(const std::vector<xcb_window_t>& windows);
    // Restores minimised windows. xfwm4 4.18 ignores a request to activate the window that it takes
    // for active, so where `top` is active this returns when it no longer is, or after 0.1 s.
    void restore(const std::vector<xcb_window_t>& windows, xcb_window_t top);
    void placeAbove(xcb_window_t window, xcb_window_t sibling);

    XcbConnection& connection_;
    std::vector<xcb_atom_t> atoms_;
    bool knowsClients_ = false;
    std::string host_;
};

}  // namespace tavo
