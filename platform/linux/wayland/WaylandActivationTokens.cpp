#include "platform/linux/wayland/WaylandActivationTokens.h"

#include <QGuiApplication>
#include <QWindow>
#include <chrono>
#include <cstdint>
#include <string_view>

#include <unistd.h>

#include <wayland-client.h>
#include <xdg-activation-v1-client-protocol.h>

#include "platform/linux/wayland/WaylandRoundtrip.h"
#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {
namespace {

// The longest wait for one token, over all its round trips.
constexpr std::chrono::milliseconds kPatience{250};

// Gets one token, or uses one. Its events have a queue of their own beside Qt's.
class TokenExchange {
public:
    explicit TokenExchange(wl_display* display)
        : display_(display), queue_(wl_display_create_queue(display)) {
        auto* const wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
        wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue_);
        registry_ = wl_display_get_registry(wrapper);
        wl_proxy_wrapper_destroy(wrapper);
        wl_registry_add_listener(registry_, &kRegistry, this);
    }
    TokenExchange(const TokenExchange&) = delete;
    TokenExchange& operator=(const TokenExchange&) = delete;
    ~TokenExchange() {
        if (token_ != nullptr) {
            xdg_activation_token_v1_destroy(token_);
        }
        // Keyboard and seat are released because Qt's connection stays, and the compositor would go
        // on sending their events.
        if (keyboard_ != nullptr) {
            wl_keyboard_release(keyboard_);
        }
        if (seat_ != nullptr) {
            wl_seat_release(seat_);
        }
        if (activation_ != nullptr) {
            xdg_activation_v1_destroy(activation_);
        }
        wl_registry_destroy(registry_);
        wl_event_queue_destroy(queue_);
    }

    std::optional<std::string> ask(wl_surface* surface, const std::string& appId) {
        if (!wait() || activation_ == nullptr) {
            return std::nullopt;
        }
        // A new wl_keyboard receives an enter event for the window with the focus. Its serial is
        // the proof of input that a token needs. The seat's capabilities come one round trip after
        // the seat, and the keyboard's enter event one after these.
        if (seat_ != nullptr && surface != nullptr && wait() && keyboard_ != nullptr && !serial_) {
            wait();
        }
        token_ = xdg_activation_v1_get_activation_token(activation_);
        xdg_activation_token_v1_add_listener(token_, &kToken, this);
        if (serial_) {
            xdg_activation_token_v1_set_serial(token_, *serial_, seat_);
        }
        if (surface != nullptr) {
            xdg_activation_token_v1_set_surface(token_, surface);
        }
        if (!appId.empty()) {
            xdg_activation_token_v1_set_app_id(token_, appId.c_str());
        }
        xdg_activation_token_v1_commit(token_);
        wait();
        return text_.empty() ? std::nullopt : std::optional(text_);
    }

    void handIn(wl_surface* surface, const std::string& token) {
        if (wait() && activation_ != nullptr) {
            xdg_activation_v1_activate(activation_, token.c_str(), surface);
            wl_display_flush(display_);
        }
    }

private:
    // Waits for one round trip, no longer than until end_; false when no answer came.
    bool wait() const {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
        return left.count() > 0 && waitForCompositor(display_, queue_, left);
    }

    static TokenExchange& self(void* data) { return *static_cast<TokenExchange*>(data); }

    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version) {
        TokenExchange& exchange = self(data);
        const std::string_view kind = interface;
        if (kind == xdg_activation_v1_interface.name && exchange.activation_ == nullptr) {
            exchange.activation_ = static_cast<xdg_activation_v1*>(
                wl_registry_bind(registry, name, &xdg_activation_v1_interface, 1));
        } else if (kind == wl_seat_interface.name && exchange.seat_ == nullptr &&
                   version >= WL_SEAT_RELEASE_SINCE_VERSION) {
            exchange.seat_ = static_cast<wl_seat*>(wl_registry_bind(
                registry, name, &wl_seat_interface, WL_SEAT_RELEASE_SINCE_VERSION));
            wl_seat_add_listener(exchange.seat_, &kSeat, data);
        }
    }

    static void capabilities(void* data, wl_seat* seat, std::uint32_t capabilities) {
        TokenExchange& exchange = self(data);
        if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0 && exchange.keyboard_ == nullptr) {
            exchange.keyboard_ = wl_seat_get_keyboard(seat);
            wl_keyboard_add_listener(exchange.keyboard_, &kKeyboard, data);
        }
    }

    static void entered(void* data, wl_keyboard* /*keyboard*/, std::uint32_t serial,
                        wl_surface* /*surface*/, wl_array* /*keys*/) {
        self(data).serial_ = serial;
    }

    static void pressed(void* data, wl_keyboard* /*keyboard*/, std::uint32_t serial,
                        std::uint32_t /*time*/, std::uint32_t /*key*/, std::uint32_t /*state*/) {
        self(data).serial_ = serial;
    }

    static void done(void* data, xdg_activation_token_v1* /*token*/, const char* text) {
        self(data).text_ = text;
    }

    static constexpr wl_registry_listener kRegistry = {
        global, [](void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}};

    static constexpr wl_seat_listener kSeat = {
        capabilities, [](void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}};

    static constexpr wl_keyboard_listener kKeyboard = {
        [](void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*format*/, std::int32_t file,
           std::uint32_t /*size*/) { ::close(file); },
        entered,
        [](void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
           wl_surface* /*surface*/) {},
        pressed,
        [](void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
           std::uint32_t /*depressed*/, std::uint32_t /*latched*/, std::uint32_t /*locked*/,
           std::uint32_t /*group*/) {},
        [](void* /*data*/, wl_keyboard* /*keyboard*/, std::int32_t /*rate*/,
           std::int32_t /*delay*/) {}};

    static constexpr xdg_activation_token_v1_listener kToken = {done};

    const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + kPatience;
    wl_display* display_;
    wl_event_queue* queue_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    wl_keyboard* keyboard_ = nullptr;
    xdg_activation_v1* activation_ = nullptr;
    xdg_activation_token_v1* token_ = nullptr;
    std::optional<std::uint32_t> serial_;
    std::string text_;
};

class WaylandActivationTokens final : public ActivationTokens {
public:
    std::optional<std::string> token(const std::string& appId) override {
        wl_display* const display = qtWaylandDisplay();
        return display == nullptr ? std::nullopt
                                  : TokenExchange(display).ask(
                                        waylandSurfaceOf(QGuiApplication::focusWindow()), appId);
    }
};

}  // namespace

std::unique_ptr<ActivationTokens> makeWaylandActivationTokens() {
    return std::make_unique<WaylandActivationTokens>();
}

void activateByToken(std::uintptr_t window, const std::string& token) {
    wl_display* const display = qtWaylandDisplay();
    wl_surface* const surface = waylandSurfaceOf(ownWindow(window));
    if (surface != nullptr) {
        TokenExchange(display).handIn(surface, token);
    }
}

}  // namespace tavo
