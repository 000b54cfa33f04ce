#include "ui/controls/ItemView.h"

#include <QFocusEvent>
#include <algorithm>
#include <utility>

#include "ui/controls/ThinScrollBar.h"

namespace tavo {

ItemView::ItemView(const QString& name, QWidget* parent)
    : QAbstractScrollArea(parent), appearance_(palette()), scrollBar_(new ThinScrollBar(*this)) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(name);
    viewport()->setAutoFillBackground(false);
}

void ItemView::focusItem(int index) {
    setCurrent(index);
    setFocus(Qt::OtherFocusReason);
    announceFocusSoon();
}

void ItemView::announceFocusSoon() {
    if (!QAccessible::isActive() || std::exchange(focusPending_, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            focusPending_ = false;
            if (hasFocus() && current_ >= 0 && current_ < itemCount()) {
                announceFocus(*this, current_);
            }
        },
        Qt::QueuedConnection);
}

void ItemView::keepScrollBar() {
    scrollBar_->keepVisible();
}

void ItemView::announceCurrent() {
    if (hasFocus() && !focusPending_) {
        announceFocus(*this, current_);
    }
}

void ItemView::updateCurrent() {
    if (current_ >= 0 && current_ < itemCount()) {
        updateItem(current_);
    }
}

void ItemView::resizeEvent(QResizeEvent*) {
    scrollBar_->place();
    relayout();
}

void ItemView::wheelEvent(QWheelEvent* event) {
    if (!scrollBar_->scrollByPixels(*event)) {
        QAbstractScrollArea::wheelEvent(event);
    }
}

// Handles the second press of a double click like the first. Passed on, it would make the window
// start to move.
void ItemView::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

// Scrolls to the current item only when Tab has brought the focus here. When the window or a closed
// menu gives the focus back, the items under the pointer must not move.
void ItemView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    announceFocusSoon();
    const bool byTab =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byTab && itemCount() > 0) {
        setCurrent(std::max(0, current_));
    }
    updateCurrent();
}

void ItemView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    updateCurrent();
}

void ItemView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        appearance_ = Appearance(palette());
        viewport()->update();
    }
}

}  // namespace tavo
