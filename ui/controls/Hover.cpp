#include "ui/controls/Hover.h"

#include <QApplication>
#include <QEnterEvent>
#include <QWidget>

namespace tavo {
namespace {

void leave(QWidget& widget) {
    QEvent event(QEvent::Leave);
    QCoreApplication::sendEvent(&widget, &event);
    widget.update();
}

// Also sent to a widget that the pointer has been over before, because it may be over another part
// of it now.
void enter(QWidget& widget, QPoint global) {
    QEnterEvent event(widget.mapFromGlobal(global), widget.window()->mapFromGlobal(global), global);
    QCoreApplication::sendEvent(&widget, &event);
    widget.update();
}

}  // namespace

void refreshHover(const QWidget& window) {
    if (QApplication::activePopupWidget() != nullptr) {
        return;
    }
    const QPoint global = QCursor::pos();
    QWidget* const found = window.isVisible() ? QApplication::widgetAt(global) : nullptr;
    QWidget* const under = found != nullptr && found->window() == window.window() ? found : nullptr;
    for (QWidget* const widget : window.window()->findChildren<QWidget*>()) {
        if (widget->underMouse() && widget != under && !widget->isAncestorOf(under)) {
            leave(*widget);
        }
    }
    if (under != nullptr) {
        enter(*under, global);
    }
}

}  // namespace tavo
