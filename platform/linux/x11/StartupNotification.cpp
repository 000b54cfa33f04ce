#include "platform/linux/x11/StartupNotification.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"
#include "support/Text.h"

namespace tavo {
namespace {

// Bytes. Longer than any real name; a message with such values fits into the socket's buffer, so
// sending does not wait.
constexpr std::size_t kLongestValue = 4096;

// `key` with its value, quoted as the protocol wants it.
std::string field(std::string_view key, const std::string& value) {
    std::string text = ' ' + std::string(key) + "=\"";
    for (const char c : repairedUtf8(std::string_view(value).substr(0, kLongestValue))) {
        if (c == '"' || c == '\\') {
            text += '\\';
        }
        if (c != '\0') {
            text += c;
        }
    }
    return text + '"';
}

// Sends messages from a window of its own, which the server destroys when the connection ends.
class Sender {
public:
    explicit Sender(const std::string& display) : connection_(XcbConnection::open(display)) {
        if (!connection_) {
            return;
        }
        connection_->beginExchange();
        window_ = xcb_generate_id(connection_->get());
        constexpr std::uint32_t kUnmanaged = 1;
        xcb_create_window(connection_->get(), XCB_COPY_FROM_PARENT, window_, connection_->root(),
                          -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT, &kUnmanaged);
        constexpr std::array kNames = {"_NET_STARTUP_INFO_BEGIN", "_NET_STARTUP_INFO"};
        atoms_ = connection_->atoms(kNames);
    }

    [[nodiscard]] bool works() const {
        return connection_ != nullptr &&
               std::find(atoms_.begin(), atoms_.end(), xcb_atom_t{XCB_ATOM_NONE}) == atoms_.end();
    }
    [[nodiscard]] int screen() const { return connection_->screen(); }

    // Sends `message` as client messages of 20 bytes each, of which the last one ends with at least
    // one zero byte. True if the server has received them.
    bool send(const std::string& message) {
        for (std::size_t at = 0; at <= message.size(); at += kPiece) {
            xcb_client_message_event_t event = {};
            event.response_type = XCB_CLIENT_MESSAGE;
            event.format = 8;
            event.window = window_;
            event.type = atoms_[at == 0 ? 0 : 1];
            const std::size_t length = std::min(kPiece, message.size() - at);
            std::copy_n(message.data() + at, length, event.data.data8);
            xcb_send_event(connection_->get(), 0, connection_->root(),
                           XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char*>(&event));
        }
        // Requests are answered in order: this reply proves that the messages have arrived.
        return connection_->reply<xcb_get_input_focus_reply_t>(
                   xcb_get_input_focus(connection_->get())) != nullptr;
    }

private:
    static constexpr std::size_t kPiece = 20;

    const std::unique_ptr<XcbConnection> connection_;
    std::vector<xcb_atom_t> atoms_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace

bool announceStart(const std::string& display, const StartAnnouncement& start) {
    Sender sender(display);
    return sender.works() &&
           sender.send("new:" + field("ID", start.id) + field("NAME", start.name) +
                       field("SCREEN", std::to_string(sender.screen())) +
                       field("BIN", start.program) + field("APPLICATION_ID", start.application));
}

bool announceStartOver(const std::string& display, const std::string& id) {
    Sender sender(display);
    return sender.works() && sender.send("remove:" + field("ID", id));
}

}  // namespace tavo
