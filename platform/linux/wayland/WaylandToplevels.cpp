#include "platform/linux/wayland/WaylandToplevels.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>

#include "platform/linux/wayland/WaylandRoundtrip.h"

namespace tavo {

// Callbacks for the compositor's events.
struct WaylandToplevels::Listeners {
    static WaylandToplevels& self(void* data) { return *static_cast<WaylandToplevels*>(data); }

    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version) {
        WaylandToplevels& all = self(data);
        const std::string_view kind = interface;
        if (kind == wl_seat_interface.name && all.seat_ == nullptr) {
            all.seat_ =
                static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        } else if (kind == zwlr_foreign_toplevel_manager_v1_interface.name &&
                   all.manager_ == nullptr) {
            all.manager_ = static_cast<zwlr_foreign_toplevel_manager_v1*>(
                wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface,
                                 std::min(version, 3U)));
            zwlr_foreign_toplevel_manager_v1_add_listener(all.manager_, &kManager, data);
        }
    }

    static void toplevel(void* data, zwlr_foreign_toplevel_manager_v1* /*manager*/,
                         zwlr_foreign_toplevel_handle_v1* handle) {
        Toplevel& window = self(data).windows_.emplace_back();
        window.handle = handle;
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kHandle, &window);
    }

    static Toplevel& told(void* data) { return *static_cast<Toplevel*>(data); }

    static void appId(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, const char* appId) {
        told(data).names.appId = appId;
    }

    static void state(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_array* states) {
        const std::span all(static_cast<const std::uint32_t*>(states->data),
                            states->size / sizeof(std::uint32_t));
        const auto has = [&](std::uint32_t state) {
            return std::find(all.begin(), all.end(), state) != all.end();
        };
        told(data).minimised = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
        told(data).active = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
    }

    // The handle of a closed window stays valid until we destroy it; the compositor ignores
    // requests on it. Without a name the window matches no application.
    static void closed(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/) {
        told(data).names.appId.clear();
    }

    static void parent(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/,
                       zwlr_foreign_toplevel_handle_v1* parent) {
        // The compositor lists a parent before its dialogs, and a closed window stays in windows_.
        told(data).parent = parent == nullptr
                                ? nullptr
                                : static_cast<const Toplevel*>(
                                      zwlr_foreign_toplevel_handle_v1_get_user_data(parent));
    }

    static constexpr wl_registry_listener kRegistry = {
        global, [](void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}};

    static constexpr zwlr_foreign_toplevel_manager_v1_listener kManager = {
        toplevel, [](void* /*data*/, zwlr_foreign_toplevel_manager_v1* /*manager*/) {}};

    static constexpr zwlr_foreign_toplevel_handle_v1_listener kHandle = {
        [](void* /*data*/, zwlr_foreign_toplevel_handle_v1* /*handle*/, const char* /*title*/) {},
        appId,
        [](void* /*data*/, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_output* /*output*/) {},
        [](void* /*data*/, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_output* /*output*/) {},
        state,
        [](void* /*data*/, zwlr_foreign_toplevel_handle_v1* /*handle*/) {},
        closed,
        parent};
};

std::unique_ptr<WaylandToplevels> WaylandToplevels::ask(const std::string& display) {
    wl_display* const connection = wl_display_connect(display.c_str());
    return connection == nullptr
               ? nullptr
               : std::unique_ptr<WaylandToplevels>(new WaylandToplevels(connection));
}

WaylandToplevels::WaylandToplevels(wl_display* display)
    : display_(display), registry_(wl_display_get_registry(display)) {
    wl_registry_add_listener(registry_, &Listeners::kRegistry, this);
    state_ = readWindows();
    if (state_ != State::listed) {
        dropWindows();
    }
}

// The first round trip brings the globals, the second one all windows.
WaylandToplevels::State WaylandToplevels::readWindows() {
    if (!waitForCompositor(display_, nullptr)) {
        return State::silent;
    }
    if (seat_ == nullptr || manager_ == nullptr) {
        return State::notListed;
    }
    return waitForCompositor(display_, nullptr) ? State::listed : State::silent;
}

WaylandToplevels::~WaylandToplevels() {
    dropWindows();
    if (manager_ != nullptr) {
        zwlr_foreign_toplevel_manager_v1_destroy(manager_);
    }
    if (seat_ != nullptr) {
        wl_seat_destroy(seat_);
    }
    wl_registry_destroy(registry_);
    wl_display_disconnect(display_);
}

void WaylandToplevels::dropWindows() {
    for (const Toplevel& window : windows_) {
        zwlr_foreign_toplevel_handle_v1_destroy(window.handle);
    }
    windows_.clear();
}

std::vector<const CompositorWindow*> WaylandToplevels::windows() const {
    std::vector<const CompositorWindow*> windows;
    for (const Toplevel& window : windows_) {
        windows.push_back(&window);
    }
    return windows;
}

void WaylandToplevels::front(const std::vector<const CompositorWindow*>& windows) {
    for (const CompositorWindow* const window : windows) {
        auto* const handle = static_cast<const Toplevel*>(window)->handle;
        if (window->minimised) {
            zwlr_foreign_toplevel_handle_v1_unset_minimized(handle);
        }
        zwlr_foreign_toplevel_handle_v1_activate(handle, seat_);
    }
    waitForCompositor(display_, nullptr);
}

}  // namespace tavo
