// The windows that an X11 window manager manages, and asking it to bring some forward (Extended
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
    const XcbWindow* parent = nullptr;            // the same, where that window is listed
    bool ofDesktop = false;  // a panel, the desktop itself, a tool tip: no application's window
};

struct XcbWindowList {
    XcbWindowList() = default;
    XcbWindowList(XcbWindowList&&) = default;
    XcbWindowList(const XcbWindowList&) = delete;  // `parent` points into the list
    XcbWindowList& operator=(const XcbWindowList&) = delete;
    ~XcbWindowList() = default;

    std::vector<XcbWindow> windows;  // the bottom one first
    xcb_window_t active = XCB_WINDOW_NONE;

    // Null for a window that is not listed.
    [[nodiscard]] const XcbWindow* find(xcb_window_t window) const;
};

// One thread at a time. Windows that vanish meanwhile, and properties of any form and size, are no
// error.
class XcbWindows {
public:
    // `connection` must outlive it.
    explicit XcbWindows(XcbConnection& connection);

    // Whether the server has answered what all else depends on. Otherwise nothing is to be asked.
    [[nodiscard]] bool works() const {
        return std::find(atoms_.begin(), atoms_.end(), xcb_atom_t{XCB_ATOM_NONE}) == atoms_.end();
    }

    // Managed windows; all is asked for in two exchanges however many they are. A window's process
    // is the one that the server knows as its client (X-Resource extension); a window that names
    // another one (_NET_WM_PID), as from inside a container, or another host, has none. Where the
    // server does not know, the window's own word is taken.
    [[nodiscard]] XcbWindowList list();

    // XCB_WINDOW_NONE when there is none.
    [[nodiscard]] xcb_window_t active();

    // The server's time of the user's last input in `window`, where that says so.
    [[nodiscard]] std::optional<xcb_timestamp_t> userTime(xcb_window_t window);

    // Brings `windows` (the bottom one first) above all others, their order kept, and makes the
    // last one active. When none of them is on the current desktop it is left for the desktop of
    // the last one; windows on other desktops stay as they are. Minimised ones are restored.
    // Returns when everything is sent; going to another desktop, and the focus that restored
    // windows take, are waited for up to 0.1 s each.
    void front(const std::vector<xcb_window_t>& windows);

private:
    enum Atom : std::size_t {
        kClientListStacking,
        kClientList,
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
    // Returns when it is the current one, or after 0.1 s: xfwm4 4.18 gives a window no focus that
    // is to be restored on a desktop not yet reached.
    void goToDesktop(std::uint32_t desktop, xcb_timestamp_t time);

    std::vector<Place> places(const std::vector<xcb_window_t>& windows);
    // Restores the windows. A manager takes a request for a window that it believes active for done
    // (xfwm4 4.18); when `top` is that, this returns when it is no longer, or after 0.1 s.
    void restore(const std::vector<xcb_window_t>& windows, xcb_window_t top, xcb_timestamp_t time);
    void placeAbove(xcb_window_t window, xcb_window_t sibling);

    XcbConnection& connection_;
    std::vector<xcb_atom_t> atoms_;
    bool knowsClients_ = false;
    std::string host_;
};

}  // namespace tavo
