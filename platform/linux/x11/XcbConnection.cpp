#include "platform/linux/x11/XcbConnection.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <future>
#include <system_error>
#include <thread>

#include <poll.h>

#include <xcb/xcbext.h>

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

std::pair<XcbConnection::Connection, int> XcbConnection::connect(const std::string& display) {
    int screen = 0;
    Connection connection(xcb_connect(display.c_str(), &screen), &xcb_disconnect);
    return {std::move(connection), screen};
}

// The library waits for a server's greeting without end, so it does that where nobody waits for it.
// A greeting that nobody waits for any more ends the connection.
XcbConnection::Opening::Opening(const std::string& display) {
    std::promise<std::pair<Connection, int>> greeting;
    greeted_ = greeting.get_future();
    try {
        std::thread([greeting = std::move(greeting), display]() mutable {
            greeting.set_value(connect(display));
        }).detach();
    } catch (const std::system_error&) {  // too many threads
        greeted_ = {};
    }
}

std::unique_ptr<XcbConnection> XcbConnection::Opening::await(std::chrono::milliseconds patience) {
    if (over() || greeted_.wait_for(patience) != std::future_status::ready) {
        return nullptr;
    }
    auto [connection, screen] = greeted_.get();
    if (xcb_connection_has_error(connection.get()) != 0) {
        return nullptr;
    }
    return std::unique_ptr<XcbConnection>(new XcbConnection(std::move(connection), screen));
}

XcbConnection::XcbConnection(Connection connection, int screen)
    : connection_(std::move(connection)), screen_(screen), root_(rootOf(get(), screen)) {}

std::vector<xcb_atom_t> XcbConnection::atoms(std::span<const char* const> names) {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* const name : names) {
        cookies.push_back(
            xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(std::strlen(name)), name));
    }
    std::vector<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t cookie : cookies) {
        const auto answer = reply<xcb_intern_atom_reply_t>(cookie);
        atoms.push_back(answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE});
    }
    return atoms;
}

std::optional<xcb_timestamp_t> XcbConnection::now() {
    if (window_ == XCB_WINDOW_NONE) {
        window_ = xcb_generate_id(get());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(get(), 0, window_, root_, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    }
    time_.reset();
    // Nothing added to a property is a change all the same, and the event says when it was.
    xcb_change_property(get(), XCB_PROP_MODE_APPEND, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        0, nullptr);
    xcb_flush(get());
    do {
        drain();
    } while (!time_ && awaitInput());
    return time_;
}

void* XcbConnection::wait(unsigned int sequence) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    xcb_flush(get());
    while (!hasCome(sequence, &reply, &error)) {
        if (!awaitInput()) {
            xcb_discard_reply(get(), sequence);
            if (!signOfLife_) {
                signOfLife_ = xcb_get_input_focus(get()).sequence;
                xcb_flush(get());
            }
            return nullptr;
        }
    }
    std::free(error);
    return reply;
}

bool XcbConnection::silent() {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (signOfLife_ && hasCome(*signOfLife_, &reply, &error)) {
        signOfLife_.reset();
        std::free(reply);
        std::free(error);
    }
    return signOfLife_.has_value();
}

bool XcbConnection::hasCome(unsigned int sequence, void** reply, xcb_generic_error_t** error) {
    if (xcb_poll_for_reply(get(), sequence, reply, error) != 0) {
        return true;
    }
    // Reading events reads everything that has come.
    drain();
    return xcb_poll_for_reply(get(), sequence, reply, error) != 0;
}

void XcbConnection::drain() {
    while (xcb_generic_event_t* const event = xcb_poll_for_event(get())) {
        if ((event->response_type & ~0x80) == XCB_PROPERTY_NOTIFY) {
            time_ = reinterpret_cast<const xcb_property_notify_event_t*>(event)->time;
        }
        std::free(event);
    }
}

bool XcbConnection::awaitInput() const {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
    pollfd input = {xcb_get_file_descriptor(get()), POLLIN, 0};
    return !broken() && left.count() > 0 &&
           (::poll(&input, 1, static_cast<int>(left.count())) >= 0 || errno == EINTR);
}

}  // namespace tavo
