// A scrolled list that paints its items itself.
#pragma once

#include <QAbstractScrollArea>

#include "ui/accessibility/AccessibleItems.h"
#include "ui/look/Appearance.h"

namespace tavo {

class ThinScrollBar;

// What the lists of the window have in common: colours, a thin scroll bar, and one item that the
// keyboard focus is on. Which keys move the focus is up to the derived class. A click acts on an
// item and leaves the focus where it is, so that typing goes on in the search field. Main thread.
class ItemView : public QAbstractScrollArea, public AccessibleItems {
public:
    bool itemHasFocus(int index) const override { return hasFocus() && index == current_; }
    void focusItem(int index) override;

protected:
    // `name` is the accessible name of the list.
    ItemView(const QString& name, QWidget* parent);

    // Moves the keyboard focus to the item, and scrolls to it.
    virtual void setCurrent(int index) = 0;

    // Paints the item again.
    virtual void updateItem(int index) = 0;

    // Computes the scroll range again.
    virtual void relayout() = 0;

    // Announces that the keyboard focus has moved to the current item of the list that has it.
    void announceCurrent();

    // Announces once which item has the keyboard focus. Delayed, because Qt first announces the
    // focus of the list as a whole, and screen readers go by the last announcement.
    void announceFocusSoon();

    // The scroll bar stays visible while there is more than is in view.
    void keepScrollBar();

    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;

    Appearance appearance_;
    int current_ = -1;  // the item with the keyboard focus, or -1

private:
    void updateCurrent();

    bool focusPending_ = false;  // whether the focus is about to be announced

    ThinScrollBar* scrollBar_;
};

}  // namespace tavo
