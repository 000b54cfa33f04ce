#include "ui/accessibility/AccessibleMenu.h"

#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QAction>
#include <QMenu>
#include <QPointer>

namespace tavo {
namespace {

// One entry. Qt's cache deletes it with its action.
class EntryInterface final : public QAccessibleObject, public QAccessibleActionInterface {
public:
    EntryInterface(QAction& action, QMenu& menu) : QAccessibleObject(&action), menu_(&menu) {}

    bool isValid() const override { return menu_ != nullptr && QAccessibleObject::isValid(); }
    QWindow* window() const override { return isValid() ? menu_->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return isValid() ? QAccessible::queryAccessibleInterface(menu_) : nullptr;
    }
    int childCount() const override { return isValid() && action().menu() != nullptr ? 1 : 0; }
    QAccessibleInterface* child(int index) const override {
        return index == 0 && childCount() == 1
                   ? QAccessible::queryAccessibleInterface(action().menu<QMenu*>())
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr && childCount() == 1 && child->object() == action().menu<QMenu*>()
                   ? 0
                   : -1;
    }
    QAccessible::Role role() const override {
        return isValid() && action().isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
    }

    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid()) {
            return {};
        }
        // A single ampersand marks a mnemonic, two stand for one.
        const QString marked = action().text();
        QString shown;
        for (qsizetype i = 0; i < marked.size(); ++i) {
            if (marked.at(i) == u'&' && ++i == marked.size()) {
                break;
            }
            shown += marked.at(i);
        }
        return shown;
    }

    QRect rect() const override {
        if (!isValid()) {
            return {};
        }
        const QRect inMenu = menu_->actionGeometry(&action());
        return {menu_->mapToGlobal(inMenu.topLeft()), inMenu.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.invisible = !menu_->isVisible() || !action().isVisible();
        state.disabled = !action().isEnabled();
        state.checkable = action().isCheckable();
        state.checked = action().isChecked();
        state.hasPopup = action().menu() != nullptr;
        state.focusable = !action().isSeparator();
        state.focused = menu_->isVisible() && menu_->activeAction() == &action();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        if (!isValid() || action().isSeparator()) {
            return {};
        }
        return {action().menu() != nullptr ? showMenuAction() : pressAction()};
    }
    void doAction(const QString& name) override {
        if (!actionNames().contains(name) || !action().isEnabled()) {
            return;
        }
        if (name == showMenuAction()) {
            menu_->setActiveAction(&action());
        } else {
            action().trigger();
        }
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    [[nodiscard]] QAction& action() const { return static_cast<QAction&>(*object()); }

    QPointer<QMenu> menu_;
};

class MenuInterface final : public QAccessibleWidget {
public:
    explicit MenuInterface(QMenu& menu) : QAccessibleWidget(&menu, QAccessible::PopupMenu) {}

    QAccessibleInterface* parent() const override {
        auto* const outer = qobject_cast<QMenu*>(menu().parentWidget());
        QAccessibleInterface* const above =
            QAccessible::queryAccessibleInterface(menu().parentWidget());
        return outer == nullptr || above == nullptr
                   ? above
                   : above->child(static_cast<int>(outer->actions().indexOf(menu().menuAction())));
    }
    int childCount() const override { return static_cast<int>(menu().actions().size()); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) {
            return nullptr;
        }
        QAction* const action = menu().actions().at(index);
        if (QAccessibleInterface* const known = QAccessible::queryAccessibleInterface(action)) {
            return known;
        }
        auto* const entry = new EntryInterface(*action, menu());
        QAccessible::registerAccessibleInterface(entry);
        return entry;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        auto* const action = child != nullptr ? qobject_cast<QAction*>(child->object()) : nullptr;
        return action == nullptr ? -1 : static_cast<int>(menu().actions().indexOf(action));
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        QAction* const action = menu().actionAt(menu().mapFromGlobal(QPoint(x, y)));
        return action == nullptr ? nullptr
                                 : child(static_cast<int>(menu().actions().indexOf(action)));
    }
    QAccessibleInterface* focusChild() const override {
        QAction* const action = menu().activeAction();
        return action == nullptr ? nullptr
                                 : child(static_cast<int>(menu().actions().indexOf(action)));
    }

private:
    [[nodiscard]] QMenu& menu() const { return static_cast<QMenu&>(*widget()); }
};

}  // namespace

QAccessibleInterface* makeAccessibleMenu(QMenu& menu) {
    return new MenuInterface(menu);
}

void announceMenuEntry(QMenu& menu, int index) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&menu, QAccessible::Focus);
        event.setChild(index);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace tavo
