#include "platform/linux/wayland/PlasmaShell.h"

#include <chrono>
#include <string_view>

#include <plasma-shell-client-protocol.h>
#include <wayland-client.h>

#include "platform/linux/wayland/WaylandRoundtrip.h"
#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kPatience{250};

class WaylandPlasmaShell final : public PlasmaShell {
public:
    explicit WaylandPlasmaShell(wl_display* display)
        : display_(display), queue_(wl_display_create_queue(display)) {
        auto* const wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
        wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue_);
        wl_registry* const registry = wl_display_get_registry(wrapper);
        wl_proxy_wrapper_destroy(wrapper);
        wl_registry_add_listener(registry, &kRegistry, this);
        waitForCompositor(display, queue_, kPatience);
        wl_registry_destroy(registry);
    }
    WaylandPlasmaShell(const WaylandPlasmaShell&) = delete;
    WaylandPlasmaShell& operator=(const WaylandPlasmaShell&) = delete;
    ~WaylandPlasmaShell() override {
        dropSurface();
        if (shell_ != nullptr) {
            org_kde_plasma_shell_destroy(shell_);
        }
        wl_event_queue_destroy(queue_);
    }

    [[nodiscard]] bool exists() const { return shell_ != nullptr; }

    void keepOutOfTaskbar(std::uintptr_t window) override {
        wl_surface* const surface = waylandSurfaceOf(ownWindow(window));
        if (surface == nullptr) {
            return;
        }
        dropSurface();
        surface_ = org_kde_plasma_shell_get_surface(shell_, surface);
        org_kde_plasma_surface_set_skip_taskbar(surface_, 1);
        org_kde_plasma_surface_set_skip_switcher(surface_, 1);
        wl_display_flush(display_);
    }

private:
    void dropSurface() {
        if (surface_ != nullptr) {
            org_kde_plasma_surface_destroy(surface_);
        }
    }

    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version) {
        auto& self = *static_cast<WaylandPlasmaShell*>(data);
        constexpr std::uint32_t kVersion = ORG_KDE_PLASMA_SURFACE_SET_SKIP_SWITCHER_SINCE_VERSION;
        if (self.shell_ == nullptr && version >= kVersion &&
            std::string_view(interface) == org_kde_plasma_shell_interface.name) {
            self.shell_ = static_cast<org_kde_plasma_shell*>(
                wl_registry_bind(registry, name, &org_kde_plasma_shell_interface, kVersion));
        }
    }

    static constexpr wl_registry_listener kRegistry = {
        global, [](void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}};

    wl_display* display_;
    wl_event_queue* queue_;
    org_kde_plasma_shell* shell_ = nullptr;
    org_kde_plasma_surface* surface_ = nullptr;
};

}  // namespace

std::unique_ptr<PlasmaShell> makePlasmaShell() {
    wl_display* const display = qtWaylandDisplay();
    auto shell = display == nullptr ? nullptr : std::make_unique<WaylandPlasmaShell>(display);
    return shell && shell->exists() ? std::move(shell) : nullptr;
}

}  // namespace tavo
