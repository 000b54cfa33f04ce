#include "platform/linux/x11/XcbWindowListWatch.h"

#include <QObject>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tavo {
namespace {

class Watch {
public:
    Watch(std::unique_ptr<XcbConnection> connection, std::function<void()> changed)
        : connection_(std::move(connection)),
          changed_(std::move(changed)),
          readable_(xcb_get_file_descriptor(connection_->get()), QSocketNotifier::Read) {
        connection_->beginExchange();
        constexpr std::uint32_t kEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_->get(), connection_->root(), XCB_CW_EVENT_MASK,
                                     &kEvents);
        // Both lists are watched: xfwm4 announces some windows in the stacking list alone. The
        // server answers requests in order, so after these replies it reports every change.
        constexpr std::array kNames = {"_NET_CLIENT_LIST", "_NET_CLIENT_LIST_STACKING"};
        lists_ = connection_->atoms(kNames);
        QObject::connect(&readable_, &QSocketNotifier::activated, [this] { read(); });
    }

private:
    void read() {
        bool listChanged = false;
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
            listChanged = listChanged || isListChange(*event);
        }
        readable_.setEnabled(!connection_->broken());
        if (listChanged) {
            changed_();
        }
    }

    [[nodiscard]] bool isListChange(const xcb_generic_event_t& event) const {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        return event.response_type == XCB_PROPERTY_NOTIFY &&
               std::find(lists_.begin(), lists_.end(), change.atom) != lists_.end();
    }

    const std::unique_ptr<XcbConnection> connection_;
    const std::function<void()> changed_;
    std::vector<xcb_atom_t> lists_;
    QSocketNotifier readable_;
};

}  // namespace

Subscription watchXcbWindowList(const std::string& display, std::function<void()> changed) {
    auto connection = XcbConnection::open(display);
    return connection
               ? Subscription(std::make_shared<Watch>(std::move(connection), std::move(changed)))
               : Subscription();
}

}  // namespace tavo
