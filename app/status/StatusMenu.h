// The status item's menu where the program draws it.
#pragma once

#include <QMenu>
#include <QRect>

#include "app/status/StatusItemActions.h"

namespace tavo {

// The places are in Qt's coordinates of the screen. Main thread.
class StatusMenu final : public QMenu {
public:
    explicit StatusMenu(StatusItemActions actions);

    // Whether the window system lets a program place its menus: X11 does, Wayland does not.
    [[nodiscard]] static bool canBePlaced();

    // Opens at the edge of `item`.
    void openBeside(const QRect& item);

    // Opens for a click in a panel, at the pointer, which is over the item then. At `said`, where
    // the panel says that the click was, if only that lies in a panel: some panels count from their
    // own corner, or open the menu by a key.
    void openInPanel(const QPoint& said);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void open();

    const StatusItemActions actions_;
    QRect item_;
    int pauses_ = 0;  // how often the opening was put off
};

}  // namespace tavo
