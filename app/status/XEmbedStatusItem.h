// The status item as a window of ours in a tray.
#pragma once

#include <functional>
#include <memory>

#include "app/status/StatusItem.h"

class QMenu;
class QMouseEvent;
class QSystemTrayIcon;
class QWidget;

namespace tavo {

// The tray leaves the pointer to us: a press alone does nothing, and we act when a button is let go
// over the item. When the tray goes away and returns, the item is there again.
class XEmbedStatusItem final : public StatusItem {
public:
    // `menu` outlives this; `clicked` is called with true for the right button.
    XEmbedStatusItem(QMenu& menu, std::function<void(bool right)> clicked);
    ~XEmbedStatusItem() override;

    void openMenu() override;

private:
    Ground ground() override;
    void paint(Ground ground) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void release(const QWidget& embedded, const QMouseEvent& event);

    QMenu& menu_;
    const std::function<void(bool right)> clicked_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    int triesToOpen_ = 0;  // in vain, of the menu
};

}  // namespace tavo
