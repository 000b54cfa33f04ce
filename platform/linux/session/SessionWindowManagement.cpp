#include "platform/linux/session/SessionWindowManagement.h"

#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "platform/RunningApplications.h"
#include "platform/linux/system/ApplicationId.h"
#include "platform/linux/wayland/ActivationTokens.h"
#include "platform/linux/x11/StartupNotification.h"
#include "platform/linux/x11/XcbReplies.h"

namespace tavo {
namespace {

class XcbWindowManagement final : public WindowManagement {
public:
    explicit XcbWindowManagement(xcb_connection_t* connection) : connection_(connection) {
        constexpr std::array<const char*, kAtoms> kNames = {
            "_NET_WM_STATE",       "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
            "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_BELOW",        "_NET_CURRENT_DESKTOP",
            "_NET_WM_DESKTOP",     "_NET_ACTIVE_WINDOW"};
        atoms_ = internAtoms(connection_, kNames);
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }

    void prepareToShow(std::uintptr_t window, const StartRequest& /*request*/) override {
        // Before it is mapped the states are the property's; the toolkit adds its own to them.
        const std::array<xcb_atom_t, 2> states = {atoms_[kSkipTaskbar], atoms_[kSkipPager]};
        const auto id = static_cast<xcb_window_t>(window);
        if (!mapped(id)) {
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id, atoms_[kState],
                                XCB_ATOM_ATOM, 32, states.size(), states.data());
        }
    }

    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        const auto id = static_cast<xcb_window_t>(window);
        // A window manager that was still at its hiding has forgotten the property meanwhile.
        tell(id, kState, {kAdd, atoms_[kSkipTaskbar], atoms_[kSkipPager], kApplication, 0});
        // A window kept below others would become active behind them.
        tell(id, kState, {kRemove, atoms_[kBelow], atoms_[kAbove], kApplication, 0});
        moveToCurrentDesktop(id);
        // As a pager asks: focus-stealing prevention guards against programs, not against users,
        // and whoever started the launcher or clicked on its item is one.
        tell(id, kActiveWindow, {kPager, XCB_CURRENT_TIME, 0, 0, 0});
        xcb_flush(connection_);
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
    using Message = std::array<std::uint32_t, 5>;
    static constexpr std::uint32_t kRemove = 0;
    static constexpr std::uint32_t kAdd = 1;
    static constexpr std::uint32_t kApplication = 1;
    static constexpr std::uint32_t kPager = 2;
    static constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;

    [[nodiscard]] bool mapped(xcb_window_t window) const {
        const XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, window), nullptr));
        return reply && reply->map_state != XCB_MAP_STATE_UNMAPPED;
    }

    [[nodiscard]] std::optional<std::uint32_t> number(xcb_window_t window, Atom property) const {
        const auto numbers =
            propertyNumbers(connection_, window, atoms_[property], XCB_ATOM_CARDINAL);
        return numbers.empty() ? std::nullopt : std::optional(numbers.front());
    }

    void moveToCurrentDesktop(xcb_window_t window) {
        const auto current = number(root_, kCurrentDesktop);
        const auto own = number(window, kDesktop);
        if (current && own && *own != *current && *own != kAllDesktops) {
            tell(window, kDesktop, {*current, kPager, 0, 0, 0});
        }
    }

    void tell(xcb_window_t window, Atom type, const Message& message) {
        xcb_client_message_event_t event = {};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atoms_[type];
        std::copy(message.begin(), message.end(), event.data.data32);
        xcb_send_event(connection_, 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&event));
    }

    xcb_connection_t* connection_;
    std::vector<xcb_atom_t> atoms_;
    xcb_window_t root_ = XCB_NONE;
};

class WaylandWindowManagement final : public WindowManagement {
public:
    explicit WaylandWindowManagement(RunningApplications& running) : running_(running) {}

    void prepareToShow(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}

    // A token may be too old, or absent, and a compositor may merely mark the window that asks with
    // one. Some let a task bar ask for any window.
    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        if (!request.activationToken.empty()) {
            activateByToken(window, request.activationToken);
        }
        for (const RunningApplication& own : running_.withIdentifier(kApplicationId)) {
            running_.activateAllWindows(own);
        }
    }

private:
    RunningApplications& running_;
};

// A platform without a window manager.
class NoWindowManagement final : public WindowManagement {
public:
    void prepareToShow(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}
    void bringToFront(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}
};

}  // namespace

std::unique_ptr<WindowManagement> makeSessionWindowManagement(RunningApplications& running) {
    if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        return std::make_unique<XcbWindowManagement>(x11->connection());
    }
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        return std::make_unique<WaylandWindowManagement>(running);
    }
    return std::make_unique<NoWindowManagement>();
}

}  // namespace tavo
