#include "platform/linux/x11/XcbConnection.h"

#include <cerrno>
#include <cstdlib>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>

#include <xcb/xcbext.h>

namespace tavo {

// xcb_connect() waits for the server's greeting without a limit, so a thread of its own calls it.
// If the greeting comes too late, that thread closes the connection and ends.
std::unique_ptr<XcbConnection> XcbConnection::open(const std::string& display) {
    using Greeting = std::pair<Connection, int>;
    std::promise<Greeting> promise;
    std::future<Greeting> greeting = promise.get_future();
    std::thread([promise = std::move(promise), display]() mutable {
        int screen = 0;
        Connection connection(xcb_connect(display.c_str(), &screen), &xcb_disconnect);
        promise.set_value({std::move(connection), screen});
    }).detach();
    if (greeting.wait_for(kPatience) != std::future_status::ready) {
        return nullptr;
    }
    auto [connection, screen] = greeting.get();
    if (xcb_connection_has_error(connection.get()) != 0) {
        return nullptr;
    }
    return std::unique_ptr<XcbConnection>(new XcbConnection(std::move(connection), screen));
}

XcbConnection::XcbConnection(Connection connection, int screen)
    : XcbRequests(connection.get(), screen), connection_(std::move(connection)) {}

std::optional<xcb_timestamp_t> XcbConnection::now() {
    if (window_ == XCB_WINDOW_NONE) {
        window_ = xcb_generate_id(get());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(get(), 0, window_, root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    }
    time_.reset();
    // Appending nothing to a property is a change, and the event about it holds the server's time.
    xcb_change_property(get(), XCB_PROP_MODE_APPEND, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        0, nullptr);
    xcb_flush(get());
    do {
        drain();
    } while (!time_ && awaitInput());
    return time_;
}

void* XcbConnection::wait(unsigned int sequence) const {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    xcb_flush(get());
    while (!hasCome(sequence, &reply, &error)) {
        if (!awaitInput()) {
            xcb_discard_reply(get(), sequence);
            return nullptr;
        }
    }
    std::free(error);
    return reply;
}

bool XcbConnection::hasCome(unsigned int sequence, void** reply,
                            xcb_generic_error_t** error) const {
    if (xcb_poll_for_reply(get(), sequence, reply, error) != 0) {
        return true;
    }
    // xcb_poll_for_reply() does not read from the socket; xcb_poll_for_event() does.
    drain();
    return xcb_poll_for_reply(get(), sequence, reply, error) != 0;
}

void XcbConnection::drain() const {
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
