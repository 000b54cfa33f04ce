#include "platform/linux/x11/XcbCompositing.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <span>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include "platform/linux/x11/XcbReplies.h"

namespace tavo {
namespace {

class WaylandCompositing final : public Compositing {
public:
    bool active() const override { return true; }
    bool blurs() const override { return false; }
    void blurBehind(std::uintptr_t /*window*/, const std::vector<PixelRect>& /*region*/) override {}
};

// Listens in on the toolkit's own connection; what it hears is still the toolkit's.
class XcbCompositing final : public Compositing, private QAbstractNativeEventFilter {
public:
    explicit XcbCompositing(xcb_connection_t* connection)
        : connection_(connection),
          // One screen is all that X servers have had for decades.
          root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {
        constexpr std::array kNames = {"_NET_WM_CM_S0", "_KDE_NET_WM_BLUR_BEHIND_REGION"};
        const auto atoms = internAtoms(connection_, kNames);
        selection_ = atoms[0];
        region_ = atoms[1];
        watchSelection();
        active_ = findActive();
        blurs_ = findBlurs();
        qApp->installNativeEventFilter(this);
    }

    XcbCompositing(const XcbCompositing&) = delete;
    XcbCompositing& operator=(const XcbCompositing&) = delete;
    ~XcbCompositing() override { qApp->removeNativeEventFilter(this); }

    bool active() const override { return active_; }
    bool blurs() const override { return active_ && blurs_; }

    void blurBehind(std::uintptr_t window, const std::vector<PixelRect>& region) override {
        const auto id = static_cast<xcb_window_t>(window);
        if (!blurs() || region.empty()) {
            xcb_delete_property(connection_, id, region_);
        } else {
            std::vector<std::uint32_t> numbers;
            for (const PixelRect& rect : region) {
                for (const int number : {rect.x, rect.y, rect.width, rect.height}) {
                    numbers.push_back(static_cast<std::uint32_t>(number));
                }
            }
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id, region_, XCB_ATOM_CARDINAL,
                                32, static_cast<std::uint32_t>(numbers.size()), numbers.data());
        }
        xcb_flush(connection_);
    }

private:
    // Changes of the root window's properties reach the toolkit's connection already.
    void watchSelection() {
        const xcb_query_extension_reply_t* const fixes =
            xcb_get_extension_data(connection_, &xcb_xfixes_id);
        if (fixes == nullptr || fixes->present == 0) {
            return;
        }
        // The server serves no client of the extension that has not said which version it knows.
        const XcbReply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            connection_,
            xcb_xfixes_query_version(connection_, XCB_XFIXES_MAJOR_VERSION,
                                     XCB_XFIXES_MINOR_VERSION),
            nullptr));
        if (!version) {
            return;
        }
        selectionEvent_ = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
        xcb_xfixes_select_selection_input(
            connection_, root_, selection_,
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }

    bool findActive() {
        const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
            connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
        return reply && reply->owner != XCB_WINDOW_NONE;
    }

    bool findBlurs() {
        const XcbReply<xcb_list_properties_reply_t> reply(xcb_list_properties_reply(
            connection_, xcb_list_properties(connection_, root_), nullptr));
        if (!reply) {
            return false;
        }
        const std::span<const xcb_atom_t> listed(
            xcb_list_properties_atoms(reply.get()),
            static_cast<std::size_t>(xcb_list_properties_atoms_length(reply.get())));
        return std::ranges::find(listed, region_) != listed.end();
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) override {
        if (type == "xcb_generic_event_t") {
            const auto* const event = static_cast<const xcb_generic_event_t*>(message);
            constexpr int kSentMask = 0x7f;
            const int kind = event->response_type & kSentMask;
            if (kind == selectionEvent_) {
                const auto* const change =
                    reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event);
                if (change->selection == selection_) {
                    become(change->owner != XCB_WINDOW_NONE, findBlurs());
                }
            } else if (kind == XCB_PROPERTY_NOTIFY) {
                const auto* const change =
                    reinterpret_cast<const xcb_property_notify_event_t*>(event);
                if (change->window == root_ && change->atom == region_) {
                    become(active_, change->state == XCB_PROPERTY_NEW_VALUE);
                }
            }
        }
        return false;
    }

    void become(bool active, bool blurs) {
        if (active != active_ || blurs != blurs_) {
            active_ = active;
            blurs_ = blurs;
            changed.emit();
        }
    }

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t region_ = XCB_ATOM_NONE;
    int selectionEvent_ = -1;
    bool active_ = false;
    bool blurs_ = false;
};

}  // namespace

std::unique_ptr<Compositing> makeXcbCompositing() {
    if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        return std::make_unique<XcbCompositing>(x11->connection());
    }
    return std::make_unique<WaylandCompositing>();
}

}  // namespace tavo
