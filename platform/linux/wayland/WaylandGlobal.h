// One of the compositor's global objects, over Qt's connection.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

struct wl_registry;

namespace tavo {

// Follows whether the compositor offers a global: it may come and go at any time. Waits for
// nothing; Qt's event loop reads the answers. Main thread; make it after the application object.
class WaylandGlobal {
public:
    // `come` binds the global with this name (wl_registry_bind); called for the first one of the
    // interface with at least this version, and for another one after that has gone. `go` is called
    // when it has gone, not when this object is destroyed. Neither is called inside the
    // constructor, nor ever on another platform than Wayland.
    using Come = std::function<void(wl_registry* registry, std::uint32_t name)>;
    WaylandGlobal(std::string interface, std::uint32_t version, Come come,
                  std::function<void()> go);
    WaylandGlobal(const WaylandGlobal&) = delete;
    WaylandGlobal& operator=(const WaylandGlobal&) = delete;
    ~WaylandGlobal();

private:
    struct Listener;

    const std::string interface_;
    const std::uint32_t version_;
    const Come come_;
    const std::function<void()> go_;
    wl_registry* registry_ = nullptr;
    std::uint32_t name_ = 0;
    bool isThere_ = false;
};

}  // namespace tavo
