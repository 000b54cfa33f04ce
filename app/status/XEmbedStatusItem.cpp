#include "app/status/XEmbedStatusItem.h"

#include <QApplication>
#include <QIcon>
#include <QMouseEvent>
#include <QSystemTrayIcon>
#include <QWidget>
#include <utility>

#include "app/status/StatusMenu.h"
#include "app/status/StatusSymbol.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

// Whether `object` is Qt's window in the tray, which only the name of its private class tells.
bool isEmbedded(const QObject* object) {
    return object->isWidgetType() && object->inherits("QSystemTrayIconSys");
}

}  // namespace

XEmbedStatusItem::XEmbedStatusItem(StatusMenu& menu, StatusItemActions actions)
    : menu_(menu), actions_(std::move(actions)) {
    icon_ = std::make_unique<QSystemTrayIcon>();
    icon_->setToolTip(texts::kProgramName.toString());
    QIcon icon;
    for (const int side : kSymbolSides) {
        icon.addPixmap(QPixmap::fromImage(statusSymbol(side)));
    }
    icon_->setIcon(icon);
    // Filters the events of all objects: the window that Qt makes in the tray, and makes again when
    // the tray returns, cannot be reached in any other way.
    qApp->installEventFilter(this);
    icon_->show();
}

XEmbedStatusItem::~XEmbedStatusItem() = default;

bool XEmbedStatusItem::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return isEmbedded(object);
        case QEvent::MouseButtonRelease:
            if (isEmbedded(object)) {
                release(*static_cast<const QWidget*>(object),
                        *static_cast<const QMouseEvent*>(event));
                return true;
            }
            return false;
        case QEvent::Show:
            if (isEmbedded(object)) {
                static_cast<QWidget*>(object)->setAccessibleName(texts::kProgramName.toString());
            }
            return false;
        default:
            return false;
    }
}

void XEmbedStatusItem::release(const QWidget& embedded, const QMouseEvent& event) {
    if (!embedded.rect().contains(event.position().toPoint())) {
        return;
    }
    if (event.button() == Qt::RightButton) {
        menu_.openBeside(icon_->geometry());
    } else if (event.button() == Qt::LeftButton) {
        actions_.show({});
    }
}

}  // namespace tavo
