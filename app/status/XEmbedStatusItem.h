// The status item as a window of this program in an X11 tray (XEmbed).
#pragma once

#include <QObject>
#include <memory>

#include "app/status/StatusItemActions.h"

class QMouseEvent;
class QSystemTrayIcon;
class QWidget;

namespace tavo {

class StatusMenu;

// The program itself handles the pointer over the item: it acts when a button is released there,
// not when it is pressed. When the tray goes away and returns, the item is there again.
// Shown as long as the object lives. Main thread.
class XEmbedStatusItem final : public QObject {
public:
    // `menu` must outlive this object. The left button shows the window, the right one opens the
    // menu.
    XEmbedStatusItem(StatusMenu& menu, StatusItemActions actions);
    ~XEmbedStatusItem() override;

private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void release(const QWidget& embedded, const QMouseEvent& event);

    StatusMenu& menu_;
    const StatusItemActions actions_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace tavo
