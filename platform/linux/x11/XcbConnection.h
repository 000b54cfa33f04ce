// A connection of our own to the X server, which never waits long.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {

// Used instead of Qt's connection where the server may keep us waiting (another program has grabbed
// it), where requests may fail (windows of other programs go at any time), on threads other than
// the main thread, and without a QGuiApplication. When it breaks, the program goes on. Its events
// are dropped while replies are waited for.
class XcbConnection final : public XcbRequests {
    using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

public:
    // The longest time to wait for the connection, and for all replies of one exchange together.
    static constexpr std::chrono::milliseconds kPatience{500};

    // Null when there is no such server, or when it does not answer within kPatience.
    static std::unique_ptr<XcbConnection> open(const std::string& display);

    // Whether the connection has broken; it never recovers.
    [[nodiscard]] bool broken() const { return xcb_connection_has_error(get()) != 0; }

    // Begins an exchange of requests and replies. Replies are waited for until kPatience from now;
    // those that come later count as missing.
    void beginExchange() { end_ = std::chrono::steady_clock::now() + kPatience; }

    // The server's clock, in milliseconds, which restarts from 0 every 49 days. Absent when the
    // server does not answer.
    std::optional<xcb_timestamp_t> now();

private:
    XcbConnection(Connection connection, int screen);

    [[nodiscard]] void* wait(unsigned int sequence) const override;

    // Whether the reply or the error has come, into `reply` or `error`; the caller frees it.
    bool hasCome(unsigned int sequence, void** reply, xcb_generic_error_t** error) const;

    // Drops all events, after taking time_ from one about a changed property.
    void drain() const;

    // Waits until there is something to read; false when the exchange ends first.
    [[nodiscard]] bool awaitInput() const;

    const Connection connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;  // never shown
    mutable std::optional<xcb_timestamp_t> time_;
    std::chrono::steady_clock::time_point end_;
};

}  // namespace tavo
