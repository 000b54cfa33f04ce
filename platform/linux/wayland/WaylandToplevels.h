// The windows that a Wayland compositor lists, and bringing some to the front
// (wlr-foreign-toplevel-management-unstable-v1).
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace tavo {

struct WaylandToplevel {
    std::string appId;
    bool minimised = false;
    bool activated = false;
    zwlr_foreign_toplevel_handle_v1* handle = nullptr;
    const WaylandToplevel* parent = nullptr;  // the listed window that it is a dialog of
};

// The windows as they are when the object is made, over a connection of its own. Do not keep it for
// long: the compositor sends every change of every window to it. Use on one thread only.
class WaylandToplevels {
public:
    // Null when no compositor listens at `display`.
    static std::unique_ptr<WaylandToplevels> ask(const std::string& display);
    WaylandToplevels(const WaylandToplevels&) = delete;
    WaylandToplevels& operator=(const WaylandToplevels&) = delete;
    ~WaylandToplevels();

    // Whether the compositor lists its windows, and did in time (0.5 s a round trip).
    [[nodiscard]] bool tells() const { return tells_; }

    // In the compositor's order; empty unless tells().
    [[nodiscard]] const std::deque<WaylandToplevel>& windows() const { return windows_; }

    // Activates each window in this order, and restores minimised ones. Returns when the compositor
    // has done so, or after 0.5 s.
    void front(const std::vector<const WaylandToplevel*>& windows);

private:
    struct Listeners;

    explicit WaylandToplevels(wl_display* display);
    void dropWindows();

    wl_display* display_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    bool tells_ = false;
    std::deque<WaylandToplevel> windows_;  // a deque: listeners hold pointers to its elements
};

}  // namespace tavo
