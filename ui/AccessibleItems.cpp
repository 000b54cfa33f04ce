#include "ui/AccessibleItems.h"

#include <QAccessibleWidget>
#include <QWidget>
#include <vector>

namespace tavo {
namespace {

constexpr char kRoleProperty[] = "tavoAccessibleRole";

class ListInterface;

// One item of a list: a position in it, valid until the items are replaced.
class ItemInterface final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ItemInterface(ListInterface& list, int index) : list_(list), index_(index) {}

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    [[nodiscard]] int index() const { return index_; }

private:
    ListInterface& list_;
    int index_;
};

class ListInterface final : public QAccessibleWidget {
public:
    ListInterface(QWidget& widget, AccessibleItems& items)
        : QAccessibleWidget(&widget, QAccessible::List), items_(items) {}

    ~ListInterface() override { forgetItems(); }

    // Item interfaces speak of positions; after the items were replaced they mean others.
    void forgetItems() {
        for (const QAccessible::Id id : children_) {
            if (id != 0) {
                QAccessible::deleteAccessibleInterface(id);
            }
        }
        children_.clear();
    }

    int childCount() const override { return items_.itemCount(); }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= items_.itemCount()) {
            return nullptr;
        }
        const auto position = static_cast<std::size_t>(index);
        if (children_.size() <= position) {
            children_.resize(static_cast<std::size_t>(items_.itemCount()), 0);
        }
        if (children_[position] == 0) {
            auto* const self = const_cast<ListInterface*>(this);
            children_[position] =
                QAccessible::registerAccessibleInterface(new ItemInterface(*self, index));
        }
        return QAccessible::accessibleInterface(children_[position]);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* const item = dynamic_cast<const ItemInterface*>(child);
        return item == nullptr ? -1 : item->index();
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        const QPoint point = widget()->mapFromGlobal(QPoint(x, y));
        for (int index = 0; index < items_.itemCount(); ++index) {
            if (items_.itemRect(index).contains(point)) {
                return child(index);
            }
        }
        return nullptr;
    }

    QAccessibleInterface* focusChild() const override {
        for (int index = 0; index < items_.itemCount(); ++index) {
            if (items_.itemHasFocus(index)) {
                return child(index);
            }
        }
        return nullptr;
    }

    [[nodiscard]] AccessibleItems& items() const { return items_; }
    [[nodiscard]] QWidget& listWidget() const { return *widget(); }

private:
    AccessibleItems& items_;
    mutable std::vector<QAccessible::Id> children_;
};

bool ItemInterface::isValid() const {
    return index_ < list_.items().itemCount();
}

QWindow* ItemInterface::window() const {
    return list_.window();
}

QAccessibleInterface* ItemInterface::parent() const {
    return &list_;
}

QString ItemInterface::text(QAccessible::Text kind) const {
    return kind == QAccessible::Name && isValid() ? list_.items().itemName(index_) : QString();
}

QRect ItemInterface::rect() const {
    if (!isValid()) {
        return {};
    }
    const QRect rect = list_.items().itemRect(index_);
    return {list_.listWidget().mapToGlobal(rect.topLeft()), rect.size()};
}

QAccessible::State ItemInterface::state() const {
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const QWidget& widget = list_.listWidget();
    state.selectable = true;
    state.selected = list_.items().itemIsSelected(index_);
    state.focusable = true;
    state.focused = list_.items().itemHasFocus(index_);
    state.invisible = !widget.isVisible();
    state.offscreen = !widget.rect().intersects(list_.items().itemRect(index_));
    state.disabled = !widget.isEnabled();
    return state;
}

void ItemInterface::doAction(const QString& name) {
    if (name == pressAction() && isValid()) {
        list_.items().pressItem(index_);
    }
}

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr) {
        return nullptr;
    }
    if (auto* const items = dynamic_cast<AccessibleItems*>(object)) {
        return new ListInterface(*widget, *items);
    }
    const QVariant role = widget->property(kRoleProperty);
    return role.isValid()
               ? new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()))
               : nullptr;
}

}  // namespace

AccessibleItems::~AccessibleItems() = default;

void installAccessibleItems() {
    QAccessible::installFactory(makeInterface);
}

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    widget.setProperty(kRoleProperty, static_cast<int>(role));
}

void announceItems(QWidget& widget) {
    if (!QAccessible::isActive()) {
        return;
    }
    if (auto* const list =
            dynamic_cast<ListInterface*>(QAccessible::queryAccessibleInterface(&widget))) {
        list->forgetItems();
        QAccessibleEvent event(&widget, QAccessible::ObjectReorder);
        QAccessible::updateAccessibility(&event);
    }
}

void announceFocus(QWidget& widget, int index) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&widget, QAccessible::Focus);
        event.setChild(index);
        QAccessible::updateAccessibility(&event);
    }
}

void announceSelection(QWidget& widget, int index) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&widget, QAccessible::Selection);
        event.setChild(index);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace tavo
