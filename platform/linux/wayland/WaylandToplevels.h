// The windows that a Wayland compositor shows to others, and bringing some forward
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

// The windows as they are when it is made, over a connection of its own that ends with it: whoever
// stays connected is woken up by every change of every window. One thread.
class WaylandToplevels {
public:
    // Null when there is no such compositor.
    static std::unique_ptr<WaylandToplevels> ask(const std::string& display);
    WaylandToplevels(const WaylandToplevels&) = delete;
    WaylandToplevels& operator=(const WaylandToplevels&) = delete;
    ~WaylandToplevels();

    // Whether the compositor tells of its windows at all.
    [[nodiscard]] bool tells() const { return tells_; }

    // In the compositor's order. Empty where it does not tell, or not in time.
    [[nodiscard]] const std::deque<WaylandToplevel>& windows() const { return windows_; }

    // Activates each, the last one last, and restores what is minimised. Returns when that is done.
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
    std::deque<WaylandToplevel> windows_;  // each stays where it is, for events are told to it
};

}  // namespace tavo
