// A connection of our own to the X server.
//
// Not the toolkit's: it answers on any thread, it is there without a toolkit, its errors (windows
// that are gone) and its events are nobody else's, and when it breaks, nothing but itself ends. It
// never waits long for a server that holds up everybody while one program has it grabbed.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbReplies.h"

namespace tavo {

// One thread at a time. Requests go out in a row and are answered in that order: send all, then
// ask for the replies.
class XcbConnection {
    using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

public:
    // What all answers of one exchange may take together.
    static constexpr std::chrono::milliseconds kPatience{500};

    // A connection on its way.
    class Opening {
    public:
        explicit Opening(const std::string& display);

        // Once, as soon as it is there, which is waited for as long as `patience` at most. Absent
        // before that, and when there is no such server.
        std::unique_ptr<XcbConnection> await(std::chrono::milliseconds patience);

        // Whether there is nothing more to wait for.
        [[nodiscard]] bool over() const { return !greeted_.valid(); }

    private:
        std::future<std::pair<Connection, int>> greeted_;
    };

    // Absent when there is no such server, or when it lets a newcomer wait for longer than
    // kPatience.
    static std::unique_ptr<XcbConnection> open(const std::string& display) {
        return Opening(display).await(kPatience);
    }

    [[nodiscard]] xcb_connection_t* get() const { return connection_.get(); }
    [[nodiscard]] xcb_window_t root() const { return root_; }
    [[nodiscard]] int screen() const { return screen_; }

    // A connection that broke stays so.
    [[nodiscard]] bool broken() const { return xcb_connection_has_error(get()) != 0; }

    // Whether the server, which let an exchange end without an answer, still says nothing. Never
    // waits: for those who would rather ask later.
    [[nodiscard]] bool silent();

    // Answers are waited for until kPatience from here.
    void beginExchange() { end_ = std::chrono::steady_clock::now() + kPatience; }

    // None when the request failed, because the window is gone for one, or the server does not
    // answer.
    template<typename Reply, typename Cookie>
    XcbReply<Reply> reply(Cookie cookie) {
        return XcbReply<Reply>(static_cast<Reply*>(wait(cookie.sequence)));
    }

    std::vector<xcb_atom_t> atoms(std::span<const char* const> names);

    // The server's clock, in milliseconds; it turns around every 49 days.
    std::optional<xcb_timestamp_t> now();

private:
    XcbConnection(Connection connection, int screen);

    static std::pair<Connection, int> connect(const std::string& display);

    // The reply, to be freed; null when there is none.
    void* wait(unsigned int sequence);

    // Whether the reply, or the failure, has come; both are for the caller to free.
    bool hasCome(unsigned int sequence, void** reply, xcb_generic_error_t** error);

    // Lets events and errors go, but for the time of a change to a property of our window.
    void drain();

    // Until there is something to read; false when the exchange ends first.
    bool awaitInput() const;

    Connection connection_;
    int screen_;
    xcb_window_t root_;
    xcb_window_t window_ = XCB_WINDOW_NONE;  // never shown
    std::optional<xcb_timestamp_t> time_;
    std::optional<unsigned int> signOfLife_;  // the request by whose reply silence ends
    std::chrono::steady_clock::time_point end_;
};

}  // namespace tavo
