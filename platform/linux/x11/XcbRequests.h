// Requests to an X server, and their replies.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace tavo {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

template<typename Reply>
using XcbReply = std::unique_ptr<Reply, FreeReply>;

// Sends requests over a connection that it does not own, such as Qt's. Waits for each reply without
// a time limit, and leaves events in the connection's queue; XcbConnection has a limit. One thread
// at a time.
//
// To wait for one round trip only, send all requests first, then take the replies: the server
// answers in order.
class XcbRequests {
public:
    static constexpr std::uint32_t kLongestProperty = 4096;  // bytes

    // `connection` must outlive this object. `screen` is the number of one of its screens.
    explicit XcbRequests(xcb_connection_t* connection, int screen = 0);
    XcbRequests(const XcbRequests&) = delete;
    XcbRequests& operator=(const XcbRequests&) = delete;
    virtual ~XcbRequests() = default;

    [[nodiscard]] xcb_connection_t* get() const { return connection_; }
    [[nodiscard]] xcb_window_t root() const { return root_; }
    [[nodiscard]] int screen() const { return screen_; }

    // The reply to the request of `cookie`; null when the request failed (its window is gone) or
    // the connection broke.
    template<typename Reply, typename Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Cookie cookie) const {
        return XcbReply<Reply>(static_cast<Reply*>(wait(cookie.sequence)));
    }

    // The atoms of `names`, in the same order; XCB_ATOM_NONE for each that the server does not
    // answer.
    [[nodiscard]] std::vector<xcb_atom_t> atoms(std::span<const char* const> names) const;

    // Asks for the first `bytes` of a property.
    [[nodiscard]] xcb_get_property_cookie_t property(xcb_window_t window, xcb_atom_t property,
                                                     xcb_atom_t type,
                                                     std::uint32_t bytes = kLongestProperty) const {
        return xcb_get_property(connection_, 0, window, property, type, 0, bytes / 4);
    }

    // The values of a property of 32-bit numbers; none when the window or the property is missing,
    // or the property has another type or size.
    [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_get_property_cookie_t cookie) const;
    [[nodiscard]] std::optional<std::uint32_t> number(xcb_get_property_cookie_t cookie) const;

    // The bytes of a property; empty also when it is longer than was asked for.
    [[nodiscard]] std::string text(xcb_get_property_cookie_t cookie) const;

    // Makes the server send an event when `selection` gets another owner or none. Returns the type
    // of that event, an xcb_xfixes_selection_notify_event_t; -1 where the server lacks the XFixes
    // extension.
    [[nodiscard]] int watchSelection(xcb_atom_t selection) const;

    // Sends a client message about `window` to the window manager (Extended Window Manager Hints,
    // "Root Window Messages"). The caller flushes the connection.
    void tellManager(xcb_window_t window, xcb_atom_t type,
                     const std::array<std::uint32_t, 5>& data) const;

protected:
    // The reply, for the caller to free; null when there is none.
    [[nodiscard]] virtual void* wait(unsigned int sequence) const;

private:
    xcb_connection_t* const connection_;
    const int screen_;
    const xcb_window_t root_;
};

// Values of a property reply, as XcbRequests::numbers() reads them.
[[nodiscard]] std::vector<std::uint32_t> numbersOf(const xcb_get_property_reply_t* reply);

}  // namespace tavo
