// Tells screen readers about the items of lists that paint their items themselves.
#pragma once

#include <QAccessible>
#include <QRect>
#include <QString>
#include <optional>
#include <string>

class QWidget;

namespace tavo {

class AccessibleList;

// Base class of a widget that paints a list of items. Each item, visible or not, is a list item in
// the accessibility tree with the actions press, set focus and, where it has one, show menu. A
// screen reader keeps its object for an item as long as an item with the same key is in the list,
// also when its position changes. While the widget is disabled its items are disabled, and their
// actions do nothing. Main thread.
class AccessibleItems {
public:
    AccessibleItems() = default;
    virtual ~AccessibleItems();
    AccessibleItems(const AccessibleItems&) = delete;
    AccessibleItems& operator=(const AccessibleItems&) = delete;

    // A button in an item, such as the star of a tile: a child of the item in the accessibility
    // tree.
    struct Button {
        QString name;
        QRect rect;  // in the widget's coordinates
    };

    [[nodiscard]] virtual int itemCount() const = 0;
    // Identifies the item when its position or its name changes. Of items with equal keys, the
    // first one keeps the first accessible object.
    [[nodiscard]] virtual const std::string& itemKey(int index) const = 0;
    [[nodiscard]] virtual QString itemName(int index) const = 0;
    [[nodiscard]] virtual QString itemDescription(int) const { return {}; }
    [[nodiscard]] virtual QRect itemRect(int index) const = 0;  // in the widget's coordinates
    [[nodiscard]] virtual bool itemIsSelected(int index) const = 0;
    [[nodiscard]] virtual bool itemHasFocus(int index) const = 0;
    virtual void pressItem(int index) = 0;
    // Moves the keyboard focus to the item and scrolls to it.
    virtual void focusItem(int index) = 0;

    [[nodiscard]] virtual bool itemsHaveMenus() const { return false; }
    virtual void showItemMenu(int) {}

    // The button that the item shows at this moment, if any.
    [[nodiscard]] virtual std::optional<Button> itemButton(int) const { return std::nullopt; }
    virtual void pressItemButton(int) {}

    // The accessible value of the whole list, such as the chosen text of a combo box.
    [[nodiscard]] virtual QString itemsValue() const { return {}; }

    // For a list that is open only at times, such as that of a combo box: whether it is open, and
    // what opens it.
    [[nodiscard]] virtual std::optional<bool> itemsExpanded() const { return std::nullopt; }
    virtual void expandItems() {}

private:
    friend class AccessibleList;
    friend void announceItems(QWidget& widget);
    friend void announceItemDetails(QWidget& widget);
    friend void announceItemDetails(QWidget& widget, int index);

    AccessibleList* accessible_ = nullptr;  // null until a screen reader asks for the list
};

// Makes each widget that is an AccessibleItems a list in the accessibility tree, and applies
// setAccessibleRole() to all other widgets. A dialog among them is a modal one; a status bar can
// speak (Announcer). Called once, before the first window is made.
void installAccessibleItems();

// Gives `widget` a role other than that of its class. To be called first in its constructor: Qt
// tells an accessibility client the role as soon as it asks, and clients cache it.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

// The role that setAccessibleRole() gave; NoRole if none.
QAccessible::Role givenAccessibleRole(const QWidget& widget);

// The widget, which must be an AccessibleItems, calls these after each change. They cost next to
// nothing while no accessibility client is connected.
void announceItems(QWidget& widget);                   // items were added, removed or moved
void announceItemDetails(QWidget& widget);             // names, descriptions or buttons changed
void announceItemDetails(QWidget& widget, int index);  // name, description or button of one changed
void announceItemsExpanded(QWidget& widget);           // the list was opened or closed
void announceFocus(QWidget& widget, int index);        // the item has the keyboard focus
void announceSelection(QWidget& widget, int index);    // the item was selected or deselected

}  // namespace tavo
