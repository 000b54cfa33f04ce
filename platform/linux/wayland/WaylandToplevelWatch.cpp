#include "platform/linux/wayland/WaylandToplevelWatch.h"

#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>

namespace tavo {
namespace {

class Watch {
public:
    Watch(wl_display* display, std::function<void()> changed)
        : display_(display),
          registry_(wl_display_get_registry(display)),
          changed_(std::move(changed)),
          readable_(wl_display_get_fd(display), QSocketNotifier::Read) {
        wl_registry_add_listener(registry_, &kRegistry, this);
        wl_display_flush(display_);
        QObject::connect(&readable_, &QSocketNotifier::activated, [this] { read(); });
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() {
        if (manager_ != nullptr) {
            zwlr_foreign_toplevel_manager_v1_destroy(manager_);
        }
        wl_registry_destroy(registry_);
        wl_display_disconnect(display_);
    }

private:
    void read() {
        if (wl_display_prepare_read(display_) == 0) {
            wl_display_read_events(display_);
        }
        wl_display_dispatch_pending(display_);
        wl_display_flush(display_);
        readable_.setEnabled(wl_display_get_error(display_) == 0);
        if (std::exchange(listed_, false)) {
            changed_();
        }
    }

    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t /*version*/) {
        Watch& watch = *static_cast<Watch*>(data);
        if (watch.manager_ == nullptr &&
            std::string_view(interface) == zwlr_foreign_toplevel_manager_v1_interface.name) {
            watch.manager_ = static_cast<zwlr_foreign_toplevel_manager_v1*>(
                wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface, 1));
            zwlr_foreign_toplevel_manager_v1_add_listener(watch.manager_, &kManager, data);
        }
    }

    // Destroys the handle at once, so that changes of the window's title and state cause no
    // wake-ups.
    static void toplevel(void* data, zwlr_foreign_toplevel_manager_v1* /*manager*/,
                         zwlr_foreign_toplevel_handle_v1* handle) {
        zwlr_foreign_toplevel_handle_v1_destroy(handle);
        static_cast<Watch*>(data)->listed_ = true;
    }

    static constexpr wl_registry_listener kRegistry = {
        global, [](void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}};
    static constexpr zwlr_foreign_toplevel_manager_v1_listener kManager = {
        toplevel, [](void* /*data*/, zwlr_foreign_toplevel_manager_v1* /*manager*/) {}};

    wl_display* display_;
    wl_registry* registry_;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    bool listed_ = false;
    const std::function<void()> changed_;
    QSocketNotifier readable_;
};

}  // namespace

Subscription watchWaylandToplevels(const std::string& display, std::function<void()> changed) {
    wl_display* const connection = wl_display_connect(display.c_str());
    return connection == nullptr
               ? Subscription()
               : Subscription(std::make_shared<Watch>(connection, std::move(changed)));
}

}  // namespace tavo
