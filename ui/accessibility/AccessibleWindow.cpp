#include "ui/accessibility/AccessibleWindow.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QMenu>

namespace tavo {
namespace {

class WindowInterface final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    // Without the margin that the window's shadow is in.
    QRect rect() const override {
        const QRect visible = widget()->contentsRect();
        return {widget()->mapToGlobal(visible.topLeft()), visible.size()};
    }

    int childCount() const override {
        return QAccessibleWidget::childCount() + static_cast<int>(openMenus().size());
    }

    QAccessibleInterface* child(int index) const override {
        const int others = QAccessibleWidget::childCount();
        const QList<QMenu*> menus = openMenus();
        if (index < others || index >= others + menus.size()) {
            return QAccessibleWidget::child(index);
        }
        return QAccessible::queryAccessibleInterface(menus.at(index - others));
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        auto* const menu = child != nullptr ? qobject_cast<QMenu*>(child->object()) : nullptr;
        const qsizetype position = menu != nullptr ? openMenus().indexOf(menu) : -1;
        return position >= 0 ? QAccessibleWidget::childCount() + static_cast<int>(position)
                             : QAccessibleWidget::indexOfChild(child);
    }

private:
    [[nodiscard]] QList<QMenu*> openMenus() const {
        QList<QMenu*> menus;
        for (QWidget* const top : QApplication::topLevelWidgets()) {
            auto* const menu = qobject_cast<QMenu*>(top);
            if (menu != nullptr && menu->isVisible() &&
                (menu->parentWidget() == widget() || menu->parentWidget() == nullptr)) {
                menus.append(menu);
            }
        }
        return menus;
    }
};

}  // namespace

QAccessibleInterface* makeAccessibleWindow(QWidget& window, QAccessible::Role role) {
    return new WindowInterface(&window, role);
}

}  // namespace tavo
