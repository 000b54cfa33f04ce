#include "platform/linux/x11/XcbCompositing.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <span>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {
namespace {

// Reads the events of Qt's connection and leaves them to Qt, too.
class XcbCompositing final : public Compositing, private QAbstractNativeEventFilter {
public:
    explicit XcbCompositing(xcb_connection_t* connection) : x11_(connection) {
        // The selection of screen 0, the only one that X servers have today.
        constexpr std::array kNames = {"_NET_WM_CM_S0", "_KDE_NET_WM_BLUR_BEHIND_REGION",
                                       "_GTK_FRAME_EXTENTS", "_NET_SUPPORTED"};
        const auto atoms = x11_.atoms(kNames);
        selection_ = atoms[0];
        region_ = atoms[1];
        extents_ = atoms[2];
        supported_ = atoms[3];
        // Only the selection needs a request: Qt has already selected the events for changes of the
        // root window's properties.
        selectionEvent_ = x11_.watchSelection(selection_);
        active_ = findActive();
        blurs_ = findBlurs();
        takesMargins_ = findMargins();
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
            xcb_delete_property(x11_.get(), id, region_);
        } else {
            std::vector<std::uint32_t> numbers;
            for (const PixelRect& rect : region) {
                for (const int number : {rect.x, rect.y, rect.width, rect.height}) {
                    numbers.push_back(static_cast<std::uint32_t>(number));
                }
            }
            xcb_change_property(x11_.get(), XCB_PROP_MODE_REPLACE, id, region_, XCB_ATOM_CARDINAL,
                                32, static_cast<std::uint32_t>(numbers.size()), numbers.data());
        }
        xcb_flush(x11_.get());
    }

    bool takesMargins() const override { return active_ && takesMargins_; }

    void setMargin(std::uintptr_t window, const WindowMargin& margin) override {
        const auto id = static_cast<xcb_window_t>(window);
        shaped_ = XCB_WINDOW_NONE;
        if (!takesMargins() || margin.width == 0) {
            xcb_delete_property(x11_.get(), id, extents_);
            if (hasXFixes()) {
                takeInputIn(id, XCB_XFIXES_REGION_NONE);  // in the whole window
            }
        } else {
            std::array<std::uint32_t, 4> sides = {};
            sides.fill(static_cast<std::uint32_t>(margin.width));
            xcb_change_property(x11_.get(), XCB_PROP_MODE_REPLACE, id, extents_, XCB_ATOM_CARDINAL,
                                32, sides.size(), sides.data());
            shaped_ = id;
            input_ = {static_cast<std::int16_t>(margin.input.x),
                      static_cast<std::int16_t>(margin.input.y),
                      static_cast<std::uint16_t>(margin.input.width),
                      static_cast<std::uint16_t>(margin.input.height)};
            shapeInput();
        }
        xcb_flush(x11_.get());
    }

private:
    // Needs XFixes.
    void takeInputIn(xcb_window_t window, xcb_xfixes_region_t region) {
        xcb_xfixes_set_window_shape_region(x11_.get(), window, XCB_SHAPE_SK_INPUT, 0, 0, region);
    }

    void shapeInput() {
        const xcb_xfixes_region_t region = xcb_generate_id(x11_.get());
        xcb_xfixes_create_region(x11_.get(), region, 1, &input_);
        takeInputIn(shaped_, region);
        xcb_xfixes_destroy_region(x11_.get(), region);
    }

    bool findActive() {
        const auto reply = x11_.reply<xcb_get_selection_owner_reply_t>(
            xcb_get_selection_owner(x11_.get(), selection_));
        return reply && reply->owner != XCB_WINDOW_NONE;
    }

    bool findBlurs() {
        const auto reply =
            x11_.reply<xcb_list_properties_reply_t>(xcb_list_properties(x11_.get(), x11_.root()));
        if (!reply) {
            return false;
        }
        const std::span<const xcb_atom_t> listed(
            xcb_list_properties_atoms(reply.get()),
            static_cast<std::size_t>(xcb_list_properties_atoms_length(reply.get())));
        return std::ranges::find(listed, region_) != listed.end();
    }

    bool hasXFixes() const { return selectionEvent_ >= 0; }

    // Without XFixes the margin would take input from the windows below.
    bool findMargins() {
        const std::vector<std::uint32_t> atoms =
            x11_.numbers(x11_.property(x11_.root(), supported_, XCB_ATOM_ATOM));
        return hasXFixes() && std::ranges::find(atoms, extents_) != atoms.end();
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
                    become(change->owner != XCB_WINDOW_NONE, findBlurs(), takesMargins_);
                }
            } else if (kind == XCB_MAP_NOTIFY) {
                // xfwm4 gives the shape to the frame around a window only when the shape changes
                // while the window has that frame.
                if (reinterpret_cast<const xcb_map_notify_event_t*>(event)->window == shaped_) {
                    shapeInput();
                }
            } else if (kind == XCB_PROPERTY_NOTIFY) {
                const auto* const change =
                    reinterpret_cast<const xcb_property_notify_event_t*>(event);
                if (change->window != x11_.root()) {
                    return false;
                }
                if (change->atom == region_) {
                    become(active_, change->state == XCB_PROPERTY_NEW_VALUE, takesMargins_);
                } else if (change->atom == supported_) {
                    become(active_, blurs_, findMargins());
                }
            }
        }
        return false;
    }

    void become(bool active, bool blurs, bool takesMargins) {
        if (active != active_ || blurs != blurs_ || takesMargins != takesMargins_) {
            active_ = active;
            blurs_ = blurs;
            takesMargins_ = takesMargins;
            changed.emit();
        }
    }

    const XcbRequests x11_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t region_ = XCB_ATOM_NONE;
    xcb_atom_t extents_ = XCB_ATOM_NONE;
    xcb_atom_t supported_ = XCB_ATOM_NONE;
    int selectionEvent_ = -1;
    xcb_window_t shaped_ = XCB_WINDOW_NONE;  // the window with a margin, which takes input here:
    xcb_rectangle_t input_ = {};
    bool active_ = false;
    bool blurs_ = false;
    bool takesMargins_ = false;
};

}  // namespace

std::unique_ptr<Compositing> makeXcbCompositing(xcb_connection_t* connection) {
    return std::make_unique<XcbCompositing>(connection);
}

}  // namespace tavo
