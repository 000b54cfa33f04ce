// The windows that a Wayland compositor lists, and bringing some to the front
// (wlr-foreign-toplevel-management-unstable-v1).
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/windows/CompositorWindows.h"

struct wl_display;
struct wl_registry;
struct wl_seat;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace tavo {

// The windows as they are when the object is made, over a connection of its own. Do not keep it for
// long: the compositor sends every change of every window to it. Use on one thread only.
class WaylandToplevels final : public CompositorWindowList {
public:
    // Null when no compositor listens at `display`.
    static std::unique_ptr<WaylandToplevels> ask(const std::string& display);
    WaylandToplevels(const WaylandToplevels&) = delete;
    WaylandToplevels& operator=(const WaylandToplevels&) = delete;
    ~WaylandToplevels() override;

    enum class State {
        listed,
        notListed,  // the compositor answered, and does not list windows
        silent,     // no answer within half a second
    };
    [[nodiscard]] State state() const { return state_; }

    // Empty unless `listed`. A window tells its application id alone.
    [[nodiscard]] std::vector<const CompositorWindow*> windows() const override;

    // Returns when the compositor has done so, or after half a second.
    void front(const std::vector<const CompositorWindow*>& windows) override;

private:
    struct Listeners;
    struct Toplevel : CompositorWindow {
        zwlr_foreign_toplevel_handle_v1* handle = nullptr;
    };

    explicit WaylandToplevels(wl_display* display);
    State readWindows();
    void dropWindows();

    wl_display* display_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    State state_ = State::silent;
    std::deque<Toplevel> windows_;  // a deque: listeners hold pointers to its elements
};

}  // namespace tavo
