// The status item as a window of this program in an X11 tray (XEmbed).
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "app/status/StatusItem.h"

class QMenu;
class QMouseEvent;
class QSystemTrayIcon;
class QWidget;

namespace tavo {

// The program itself handles the pointer over the item: it acts when a button is released there,
// not when it is pressed. When the tray goes away and returns, the item is there again.
class XEmbedStatusItem final : public QObject, public StatusItem {
public:
    // `menu` must outlive this object. `clicked` is called with true for the right button, with
    // false for the left one.
    XEmbedStatusItem(QMenu& menu, std::function<void(bool right)> clicked);
    ~XEmbedStatusItem() override;

    void openMenu() override;

private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void release(const QWidget& embedded, const QMouseEvent& event);

    QMenu& menu_;
    const std::function<void(bool right)> clicked_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    int delays_ = 0;  // how often the menu that is about to open was put off
};

}  // namespace tavo
