// The system tray of an X11 server, which shows small windows of other programs (System Tray
// Protocol 0.4).
#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/linux/x11/XcbRequests.h"

namespace tavo {

// Uses Qt's connection. Main thread, while the QApplication exists.
class XcbSystemTray final : QAbstractNativeEventFilter {
public:
    // Calls `appeared` each time that a tray has come, but never inside a call of this class.
    XcbSystemTray(xcb_connection_t* connection, std::function<void()> appeared);
    XcbSystemTray(const XcbSystemTray&) = delete;
    XcbSystemTray& operator=(const XcbSystemTray&) = delete;
    ~XcbSystemTray() override;

    // Whether there is a tray now: asks the server.
    [[nodiscard]] bool exists() const;

private:
    enum Atom : std::uint8_t { kTray, kManager, kAtoms };

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

    const XcbRequests x11_;
    const std::function<void()> appeared_;
    std::vector<xcb_atom_t> atoms_;
};

}  // namespace tavo
