// The panels and trays of an X server (System Tray Protocol 0.4; Extended Window Manager Hints
// 1.5).
#pragma once

#include <QAbstractNativeEventFilter>
#include <array>
#include <functional>
#include <optional>

#include <sys/types.h>

#include <xcb/xcb.h>

#include "platform/StatusItemHosts.h"

namespace tavo {

// Over the toolkit's connection, and within its application object's life. Main thread.
class XcbPanels final : QAbstractNativeEventFilter {
public:
    // `changed` is called, never inside a call, when a tray has come, or a panel that was looked
    // for in vain may have.
    XcbPanels(xcb_connection_t* connection, std::function<void()> changed);
    XcbPanels(const XcbPanels&) = delete;
    XcbPanels& operator=(const XcbPanels&) = delete;
    ~XcbPanels() override;

    // Whether somebody takes windows of others into a tray.
    [[nodiscard]] bool trayThere() const;

    // The place of the panel that `process` or its parent shows, as panels run their parts in
    // processes of their own (0 where none is known); that of the only panel otherwise.
    [[nodiscard]] std::optional<PanelPlace> panelOf(pid_t process);

private:
    enum Atom : std::uint8_t { kTray, kManager, kClientList, kWindowType, kDock, kProcess, kAtoms };

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

    void hearOfManagers() const;
    [[nodiscard]] bool isDock(xcb_window_t window) const;
    [[nodiscard]] bool shownBy(xcb_window_t window, pid_t process) const;
    [[nodiscard]] std::optional<PanelPlace> placeOf(xcb_window_t window) const;

    xcb_connection_t* const connection_;
    const xcb_window_t root_;
    const std::function<void()> changed_;
    std::vector<xcb_atom_t> atoms_;
    bool soughtInVain_ = false;
};

}  // namespace tavo
