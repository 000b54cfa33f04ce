#include "platform/linux/wayland/WaylandGlobal.h"

#include <utility>

#include <wayland-client.h>

#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {

struct WaylandGlobal::Listener {
    static void come(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t version) {
        auto& self = *static_cast<WaylandGlobal*>(data);
        if (!self.isThere_ && self.interface_ == interface && version >= self.version_) {
            self.isThere_ = true;
            self.name_ = name;
            self.come_(registry, name);
        }
    }

    static void go(void* data, wl_registry* /*registry*/, std::uint32_t name) {
        auto& self = *static_cast<WaylandGlobal*>(data);
        if (self.isThere_ && self.name_ == name) {
            self.isThere_ = false;
            self.go_();
        }
    }

    static constexpr wl_registry_listener kFunctions = {come, go};
};

WaylandGlobal::WaylandGlobal(std::string interface, std::uint32_t version, Come come,
                             std::function<void()> go)
    : interface_(std::move(interface)),
      version_(version),
      come_(std::move(come)),
      go_(std::move(go)) {
    if (wl_display* const display = qtWaylandDisplay()) {
        registry_ = wl_display_get_registry(display);
        wl_registry_add_listener(registry_, &Listener::kFunctions, this);
    }
}

WaylandGlobal::~WaylandGlobal() {
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
}

}  // namespace tavo
