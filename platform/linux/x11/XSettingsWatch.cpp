#include "platform/linux/x11/XSettingsWatch.h"

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QGuiApplication>
#include <array>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {
namespace {

// Reads the events of Qt's connection and leaves them to Qt, too.
class QtXSettingsWatch final : public XSettingsWatch, private QAbstractNativeEventFilter {
public:
    explicit QtXSettingsWatch(xcb_connection_t* connection) : x11_(connection) {
        // The selection of screen 0, the only one that X servers have today.
        constexpr std::array kNames = {"_XSETTINGS_S0", "_XSETTINGS_SETTINGS"};
        const auto atoms = x11_.atoms(kNames);
        selection_ = atoms[0];
        settings_ = atoms[1];
        selectionEvent_ = x11_.watchSelection(selection_);
        followManager();
        qGuiApp->installNativeEventFilter(this);
    }
    QtXSettingsWatch(const QtXSettingsWatch&) = delete;
    QtXSettingsWatch& operator=(const QtXSettingsWatch&) = delete;
    ~QtXSettingsWatch() override { qGuiApp->removeNativeEventFilter(this); }

private:
    void followManager() {
        const auto owner = x11_.reply<xcb_get_selection_owner_reply_t>(
            xcb_get_selection_owner(x11_.get(), selection_));
        manager_ = owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
        if (manager_ != XCB_WINDOW_NONE) {
            // Exactly the events that Qt selects here: X keeps one event mask for each client and
            // window, and this connection is Qt's.
            constexpr std::uint32_t kEvents =
                XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(x11_.get(), manager_, XCB_CW_EVENT_MASK, &kEvents);
            xcb_flush(x11_.get());
        }
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) override {
        if (type != "xcb_generic_event_t") {
            return false;
        }
        const auto* const event = static_cast<const xcb_generic_event_t*>(message);
        constexpr int kSentMask = 0x7f;
        const int kind = event->response_type & kSentMask;
        if (kind == selectionEvent_) {
            const auto* const change =
                reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event);
            if (change->selection == selection_) {
                followManager();
                changed.emit();
            }
        } else if (kind == XCB_PROPERTY_NOTIFY) {
            const auto* const change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
            if (change->window == manager_ && change->atom == settings_) {
                changed.emit();
            }
        }
        return false;
    }

    const XcbRequests x11_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t settings_ = XCB_ATOM_NONE;
    xcb_window_t manager_ = XCB_WINDOW_NONE;
    int selectionEvent_ = -1;
};

}  // namespace

std::unique_ptr<XSettingsWatch> watchXSettings() {
    auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? std::make_unique<QtXSettingsWatch>(x11->connection()) : nullptr;
}

}  // namespace tavo
