#include "platform/linux/x11/XcbWindowManagement.h"

#include <QGuiApplication>
#include <array>
#include <cstdlib>
#include <vector>

#include <qpa/qplatformnativeinterface.h>

#include "platform/linux/x11/StartupNotification.h"
#include "platform/linux/x11/XcbRequests.h"

namespace tavo {
namespace {

class XcbWindowManagement final : public WindowManagement {
public:
    explicit XcbWindowManagement(xcb_connection_t* connection) : x11_(connection) {
        constexpr std::array<const char*, kAtoms> kNames = {
            "_NET_WM_STATE",       "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
            "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_BELOW",        "_NET_CURRENT_DESKTOP",
            "_NET_WM_DESKTOP",     "_NET_ACTIVE_WINDOW"};
        atoms_ = x11_.atoms(kNames);
    }

    void prepareToShow(std::uintptr_t window, const StartRequest& /*request*/) override {
        // The states of a window that is not mapped are in its property, and Qt adds its own to
        // them when it maps the window. The states of a mapped window belong to the window manager.
        const std::array<xcb_atom_t, 2> states = {atoms_[kSkipTaskbar], atoms_[kSkipPager]};
        const auto id = static_cast<xcb_window_t>(window);
        if (!mapped(id)) {
            xcb_change_property(x11_.get(), XCB_PROP_MODE_REPLACE, id, atoms_[kState],
                                XCB_ATOM_ATOM, 32, states.size(), states.data());
        }
    }

    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        const auto id = static_cast<xcb_window_t>(window);
        // Sets the states once more: a window manager that had yet to carry out the last hiding has
        // deleted the property since prepareToShow().
        x11_.tellManager(id, atoms_[kState],
                         {kAdd, atoms_[kSkipTaskbar], atoms_[kSkipPager], kApplication, 0});
        // Clears _NET_WM_STATE_BELOW, because a window that is kept below others would become
        // active behind them.
        x11_.tellManager(id, atoms_[kState],
                         {kRemove, atoms_[kBelow], atoms_[kAbove], kApplication, 0});
        moveToCurrentDesktop(id);
        // With the source indication of a pager: window managers refuse the focus to programs that
        // ask for it themselves, but this request is the user's, by a start or a click.
        x11_.tellManager(id, atoms_[kActiveWindow], {kPager, serverTime(), 0, 0, 0});
        xcb_flush(x11_.get());
        const char* const display = std::getenv("DISPLAY");
        if (!request.startupId.empty() && display != nullptr) {
            announceStartOver(display, request.startupId);
        }
    }

private:
    enum Atom : std::uint8_t {
        kState,
        kSkipTaskbar,
        kSkipPager,
        kAbove,
        kBelow,
        kCurrentDesktop,
        kDesktop,
        kActiveWindow,
        kAtoms
    };
    static constexpr std::uint32_t kRemove = 0;
    static constexpr std::uint32_t kAdd = 1;
    static constexpr std::uint32_t kApplication = 1;
    static constexpr std::uint32_t kPager = 2;
    static constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;

    // The X server's present time. Some window managers complain of a request without a time.
    static xcb_timestamp_t serverTime() {
        void* const time = QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
            "gettimestamp", QGuiApplication::primaryScreen());
        return static_cast<xcb_timestamp_t>(reinterpret_cast<std::uintptr_t>(time));
    }

    [[nodiscard]] bool mapped(xcb_window_t window) const {
        const auto reply = x11_.reply<xcb_get_window_attributes_reply_t>(
            xcb_get_window_attributes(x11_.get(), window));
        return reply && reply->map_state != XCB_MAP_STATE_UNMAPPED;
    }

    void moveToCurrentDesktop(xcb_window_t window) {
        const auto ask = [this](xcb_window_t of, Atom property) {
            return x11_.property(of, atoms_[property], XCB_ATOM_CARDINAL);
        };
        const auto currentCookie = ask(x11_.root(), kCurrentDesktop);
        const auto ownCookie = ask(window, kDesktop);
        const auto current = x11_.number(currentCookie);
        const auto own = x11_.number(ownCookie);
        if (current && own && *own != *current && *own != kAllDesktops) {
            x11_.tellManager(window, atoms_[kDesktop], {*current, kPager, 0, 0, 0});
        }
    }

    const XcbRequests x11_;
    std::vector<xcb_atom_t> atoms_;
};

}  // namespace

std::unique_ptr<WindowManagement> makeXcbWindowManagement(xcb_connection_t* connection) {
    return std::make_unique<XcbWindowManagement>(connection);
}

}  // namespace tavo
