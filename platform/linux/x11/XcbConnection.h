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
// the main thread, and without a QGuiApplication. When it breaks, nothing but itself ends. Its
// events are dropped while replies are waited for.
class XcbConnection final : public XcbRequests {
    using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

public:
    // The longest wait for all replies of one exchange together, and for the connection.
    static constexpr std::chrono::milliseconds kPatience{500};

    // Absent when there is no such server, or when it does not answer within kPatience.
    static std::unique_ptr<XcbConnection> open(const std::string& display);

    // A connection that broke stays so.
    [[nodiscard]] bool broken() const { return xcb_connection_has_error(get()) != 0; }

    // Replies are waited for until kPatience from now; after that there are none.
    void beginExchange() { end_ = std::chrono::steady_clock::now() + kPatience; }

    // The server's clock, in milliseconds, which restarts from 0 every 49 days. Absent when the
    // server does not answer.
    std::optional<xcb_timestamp_t> now();

private:
    XcbConnection(Connection connection, int screen);

    [[nodiscard]] void* wait(unsigned int sequence) const override;

    // Whether the reply, or the failure, has come; both are for the caller to free.
    bool hasCome(unsigned int sequence, void** reply, xcb_generic_error_t** error) const;

    // Drops all events but one: a change to a property of window_ sets time_.
    void drain() const;

    // Until there is something to read; false when the exchange ends first.
    [[nodiscard]] bool awaitInput() const;

    const Connection connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;  // never shown
    mutable std::optional<xcb_timestamp_t> time_;
    std::chrono::steady_clock::time_point end_;
};

}  // namespace tavo
