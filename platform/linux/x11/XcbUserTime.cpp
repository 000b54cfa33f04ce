#include "platform/linux/x11/XcbUserTime.h"

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QGuiApplication>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {
namespace {

// The beginning that all device events of the X Input Extension 2 have.
struct InputEvent {
    std::uint8_t responseType;
    std::uint8_t extension;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint16_t type;
    std::uint16_t device;
    xcb_timestamp_t time;
};

// Event types of the X Input Extension 2.
constexpr std::uint16_t kKeyPress = 2;
constexpr std::uint16_t kButtonRelease = 5;
constexpr std::uint16_t kTouchBegin = 18;
constexpr std::uint16_t kTouchEnd = 20;

class InputWatch final : public QAbstractNativeEventFilter {
public:
    InputWatch() {
        if (auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
            connection_ = x11->connection();
            qGuiApp->installNativeEventFilter(this);
        }
    }

    [[nodiscard]] std::optional<std::uint32_t> time() const { return time_; }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) override {
        if (type != "xcb_generic_event_t") {
            return false;
        }
        const auto* const event = static_cast<const xcb_generic_event_t*>(message);
        const int kind = event->response_type & 0x7f;
        // Events about pressed and released keys and buttons have their time at the same place.
        if (kind >= XCB_KEY_PRESS && kind <= XCB_BUTTON_RELEASE) {
            time_ = static_cast<const xcb_key_press_event_t*>(message)->time;
        } else if (kind == XCB_GE_GENERIC) {
            const auto* const input = static_cast<const InputEvent*>(message);
            if (input->extension == inputExtension() && isInput(input->type)) {
                time_ = input->time;
            }
        }
        return false;
    }

private:
    static bool isInput(std::uint16_t type) {
        return (type >= kKeyPress && type <= kButtonRelease) ||
               (type >= kTouchBegin && type <= kTouchEnd);
    }

    std::uint8_t inputExtension() {
        if (!inputExtension_) {
            constexpr std::string_view kName = "XInputExtension";
            const auto reply = XcbRequests(connection_)
                                   .reply<xcb_query_extension_reply_t>(xcb_query_extension(
                                       connection_, kName.size(), kName.data()));
            inputExtension_ = reply && reply->present != 0 ? reply->major_opcode : 0;
        }
        return *inputExtension_;
    }

    xcb_connection_t* connection_ = nullptr;
    std::optional<std::uint8_t> inputExtension_;
    std::optional<std::uint32_t> time_;
};

}  // namespace

std::function<std::optional<std::uint32_t>()> watchXcbUserTime() {
    return [watch = std::make_shared<InputWatch>()] { return watch->time(); };
}

}  // namespace tavo
