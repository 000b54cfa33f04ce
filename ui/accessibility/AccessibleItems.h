// Lists that paint their own items, for screen readers.
#pragma once

#include <QAccessible>
#include <QRect>
#include <QString>
#include <optional>
#include <string>

class QWidget;

namespace tavo {

class AccessibleList;

// What a widget that paints a list of items says about them. Each item becomes a list item of the
// accessibility tree, in view or not, with a press action, one that gives it the keyboard, and
// perhaps one for its menu. An item keeps its place in a screen reader for as long as its key is
// in the list, wherever it moves. While the widget is disabled the items say so and do nothing.
class AccessibleItems {
public:
    AccessibleItems() = default;
    virtual ~AccessibleItems();
    AccessibleItems(const AccessibleItems&) = delete;
    AccessibleItems& operator=(const AccessibleItems&) = delete;

    // A small control that an item shows, a button of the tree below the item.
    struct Button {
        QString name;
        QRect rect;  // in the widget's coordinates
    };

    [[nodiscard]] virtual int itemCount() const = 0;
    // What the item is, whatever its position and its name. Of items with equal keys the first
    // known one stays the first.
    [[nodiscard]] virtual const std::string& itemKey(int index) const = 0;
    [[nodiscard]] virtual QString itemName(int index) const = 0;
    [[nodiscard]] virtual QString itemDescription(int) const { return {}; }
    [[nodiscard]] virtual QRect itemRect(int index) const = 0;  // in the widget's coordinates
    [[nodiscard]] virtual bool itemIsSelected(int index) const = 0;
    [[nodiscard]] virtual bool itemHasFocus(int index) const = 0;
    virtual void pressItem(int index) = 0;
    // Gives the item the keyboard and brings it into view.
    virtual void focusItem(int index) = 0;

    [[nodiscard]] virtual bool itemsHaveMenus() const { return false; }
    virtual void showItemMenu(int) {}

    // The button that the item shows now, if any.
    [[nodiscard]] virtual std::optional<Button> itemButton(int) const { return std::nullopt; }
    virtual void pressItemButton(int) {}

    // What the whole stands at, where that is said in words.
    [[nodiscard]] virtual QString itemsValue() const { return {}; }

private:
    friend class AccessibleList;
    friend void announceItems(QWidget& widget);
    friend void announceMarks(QWidget& widget);
    friend void announceMarks(QWidget& widget, int index);

    AccessibleList* accessible_ = nullptr;  // once somebody asked
};

// Makes every widget that is an AccessibleItems a list of the accessibility tree, and gives the
// others the roles they were set. Once, before the first window.
void installAccessibleItems();

// What `widget` is to a screen reader, where its class does not say. The first thing that its
// constructor does: whoever asks earlier is told, and remembers, what its class says.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

// To be called by the widget, which is an AccessibleItems, right after what they name. All cost
// next to nothing while no assistive technology listens.
void announceItems(QWidget& widget);                 // other items, or another order
void announceMarks(QWidget& widget);                 // the same items; names, buttons may differ
void announceMarks(QWidget& widget, int index);      // one item's name, button
void announceFocus(QWidget& widget, int index);      // the keyboard came to the item
void announceSelection(QWidget& widget, int index);  // the item was selected, or no longer is

}  // namespace tavo
