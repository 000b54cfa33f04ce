// Lists that paint their own items, for screen readers.
#pragma once

#include <QAccessible>
#include <QRect>
#include <QString>

class QWidget;

namespace tavo {

// What a widget that paints a list of items says about them. Each item becomes a list item of the
// accessibility tree with a press action, in view or not.
class AccessibleItems {
public:
    virtual ~AccessibleItems();

    [[nodiscard]] virtual int itemCount() const = 0;
    [[nodiscard]] virtual QString itemName(int index) const = 0;
    [[nodiscard]] virtual QRect itemRect(int index) const = 0;  // in the widget's coordinates
    [[nodiscard]] virtual bool itemIsSelected(int index) const = 0;
    [[nodiscard]] virtual bool itemHasFocus(int index) const = 0;
    virtual void pressItem(int index) = 0;
};

// Makes every widget that is an AccessibleItems a list of the accessibility tree, and gives the
// others the roles they were set. Once, before the first window.
void installAccessibleItems();

// What `widget` is to a screen reader, where its class does not say. The first thing that its
// constructor does: whoever asks earlier is told, and remembers, what its class says.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

// To be called by the widget after its items were replaced, and after the focused or selected
// item changed. Cost nothing while no assistive technology listens.
void announceItems(QWidget& widget);
void announceFocus(QWidget& widget, int index);
void announceSelection(QWidget& widget, int index);

}  // namespace tavo
