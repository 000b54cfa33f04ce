#include "platform/linux/XcbCompositing.h"

#include <QGuiApplication>
#include <cstdlib>
#include <string>

#include <xcb/xcb.h>

namespace tavo {
namespace {

template<typename Reply>
struct FreeReply {
    void operator()(Reply* reply) const { std::free(reply); }
};

template<typename Reply>
using ReplyPointer = std::unique_ptr<Reply, FreeReply<Reply>>;

class XcbCompositing final : public Compositing {
public:
    XcbCompositing() {
        if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
            connection_ = x11->connection();
            // One screen is all that X servers have had for decades.
            const std::string name = "_NET_WM_CM_S0";
            const auto cookie = xcb_intern_atom(
                connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
            const ReplyPointer<xcb_intern_atom_reply_t> reply(
                xcb_intern_atom_reply(connection_, cookie, nullptr));
            if (reply) {
                selection_ = reply->atom;
            }
        }
    }

    bool active() const override {
        if (connection_ == nullptr) {
            return true;
        }
        if (selection_ == XCB_NONE) {
            return false;
        }
        const ReplyPointer<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
            connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
        return reply && reply->owner != XCB_WINDOW_NONE;
    }

private:
    xcb_connection_t* connection_ = nullptr;
    xcb_atom_t selection_ = XCB_NONE;
};

}  // namespace

std::unique_ptr<Compositing> makeXcbCompositing() {
    return std::make_unique<XcbCompositing>();
}

}  // namespace tavo
