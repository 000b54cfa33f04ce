// Lists that paint their own items, for screen readers.
#pragma once

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

// Makes every widget that is an AccessibleItems a list, and every widget with the property
// kDialogProperty a dialog, of the accessibility tree. Once, before the first window.
void installAccessibleItems();

inline constexpr char kDialogProperty[] = "tavoDialog";

// To be called by the widget after its items were replaced, and after the focused or selected
// item changed. Cost nothing while no assistive technology listens.
void announceItems(QWidget& widget);
void announceFocus(QWidget& widget, int index);
void announceSelection(QWidget& widget, int index);

}  // namespace tavo
