#include "platform/linux/x11/XcbReplies.h"

#include <cstring>

namespace tavo {

std::vector<xcb_atom_t> internAtoms(xcb_connection_t* connection,
                                    std::span<const char* const> names) {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* const name : names) {
        cookies.push_back(
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name));
    }
    std::vector<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t cookie : cookies) {
        const XcbReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection, cookie, nullptr));
        atoms.push_back(reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE});
    }
    return atoms;
}

std::vector<std::uint32_t> propertyNumbers(xcb_connection_t* connection, xcb_window_t window,
                                           xcb_atom_t property, xcb_atom_t type) {
    constexpr std::uint32_t kLongest = 1024;
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, type, 0, kLongest), nullptr));
    if (!reply || reply->type != type || reply->format != 32) {
        return {};
    }
    const auto* const first =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

}  // namespace tavo
