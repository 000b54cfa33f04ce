#include "platform/linux/x11/XcbPointer.h"

#include <QGuiApplication>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {

bool isXcbButtonHeld() {
    const auto* const qt = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (qt == nullptr) {
        return false;
    }
    const XcbRequests x11(qt->connection());
    const auto pointer =
        x11.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(x11.get(), x11.root()));
    constexpr int kButtons =
        XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;  // the rest is the wheel's
    return pointer && (pointer->mask & kButtons) != 0;
}

}  // namespace tavo
