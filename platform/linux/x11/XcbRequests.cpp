#include "platform/linux/x11/XcbRequests.h"

#include <algorithm>
#include <cstring>

#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

namespace tavo {
namespace {

xcb_window_t rootOf(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screen.rem > 1; --number) {
        xcb_screen_next(&screen);
    }
    return screen.data->root;
}

}  // namespace

XcbRequests::XcbRequests(xcb_connection_t* connection, int screen)
    : connection_(connection), screen_(screen), root_(rootOf(connection, screen)) {}

void* XcbRequests::wait(unsigned int sequence) const {
    xcb_generic_error_t* error = nullptr;
    void* const reply = xcb_wait_for_reply(connection_, sequence, &error);
    std::free(error);
    return reply;
}

std::vector<xcb_atom_t> XcbRequests::atoms(std::span<const char* const> names) const {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* const name : names) {
        cookies.push_back(
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name));
    }
    std::vector<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t cookie : cookies) {
        const auto answer = reply<xcb_intern_atom_reply_t>(cookie);
        atoms.push_back(answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE});
    }
    return atoms;
}

std::vector<std::uint32_t> numbersOf(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    return {first, first + reply->value_len};
}

std::vector<std::uint32_t> XcbRequests::numbers(xcb_get_property_cookie_t cookie) const {
    return numbersOf(reply<xcb_get_property_reply_t>(cookie).get());
}

std::optional<std::uint32_t> XcbRequests::number(xcb_get_property_cookie_t cookie) const {
    const std::vector<std::uint32_t> all = numbers(cookie);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::string XcbRequests::text(xcb_get_property_cookie_t cookie) const {
    const auto answer = reply<xcb_get_property_reply_t>(cookie);
    if (!answer || answer->format != 8 || answer->bytes_after > 0) {
        return {};
    }
    const auto* const first = static_cast<const char*>(xcb_get_property_value(answer.get()));
    return {first, first + xcb_get_property_value_length(answer.get())};
}

void XcbRequests::tellManager(xcb_window_t window, xcb_atom_t type,
                              const std::array<std::uint32_t, 5>& data) const {
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
}

int XcbRequests::watchSelection(xcb_atom_t selection) const {
    const xcb_query_extension_reply_t* const fixes =
        xcb_get_extension_data(connection_, &xcb_xfixes_id);
    if (fixes == nullptr || fixes->present == 0) {
        return -1;
    }
    // XFixes requires that a client says its version first.
    const auto version = reply<xcb_xfixes_query_version_reply_t>(
        xcb_xfixes_query_version(connection_, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION));
    if (!version) {
        return -1;
    }
    xcb_xfixes_select_selection_input(connection_, root_, selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    return fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
}

}  // namespace tavo
