#include "tests/golden/Outline.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <algorithm>

#include "tests/golden/Stage.h"
#include "ui/controls/Sheet.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/editor/CategoryEditorRow.h"
#include "ui/grid/TileGrid.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/LauncherView.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

QString quoted(QString text) {
    // Zero-width spaces allow line breaks in long words, and cannot be seen.
    text.remove(QChar(0x200b));
    return u'"' + text.replace(u'\n', QStringLiteral("\\n")) + u'"';
}

// Collects lines with indentation.
class Outline {
public:
    void line(const QString& text) { text_ += QString(2 * depth_, u' ') + text.trimmed() + u'\n'; }
    void below(const std::function<void()>& lines) {
        ++depth_;
        lines();
        --depth_;
    }
    // Adds a line for `widget`: the text, then whether it is disabled or has the keyboard focus.
    void state(const QString& text, const QWidget& widget) {
        line(text + (widget.isEnabled() ? QString() : QStringLiteral(", disabled")) +
             (widget.hasFocus() ? QStringLiteral(", has the keyboard") : QString()));
    }

    void items(const AccessibleItems& items) {
        for (int index = 0; index < items.itemCount(); ++index) {
            QString text = items.itemName(index);
            if (const QString more = items.itemDescription(index); !more.isEmpty()) {
                text += QStringLiteral(" (%1)").arg(more);
            }
            if (const auto button = items.itemButton(index)) {
                text += QStringLiteral(" [%1]").arg(button->name);
            }
            if (items.itemIsSelected(index)) {
                text += QStringLiteral(", selected");
            }
            if (items.itemHasFocus(index)) {
                text += QStringLiteral(", has the keyboard");
            }
            line(text);
        }
    }

    void field(const QLineEdit& field) {
        const QString shown = field.text().isEmpty()
                                  ? QStringLiteral("empty, ") + quoted(field.placeholderText())
                                  : quoted(field.text());
        state(QStringLiteral("field ") + shown, field);
    }

    void button(const QAbstractButton& button) {
        const QString name = !button.accessibleName().isEmpty() ? button.accessibleName()
                             : !button.text().isEmpty()         ? button.text()
                                                                : button.toolTip();
        state(QStringLiteral("button ") + quoted(name), button);
    }

    void picker(const QComboBox& picker) {
        state(QStringLiteral("picker %1 at %2")
                  .arg(quoted(picker.accessibleName()), quoted(picker.currentText())),
              picker);
    }

    void rows(CategoryEditorList& rows) {
        for (int index = 0; index < rows.rowCount(); ++index) {
            line(QStringLiteral("row"));
            below([&] { parts(rows.rowAt(index)); });
        }
    }

    void menu(const QMenu& menu) {
        line(QStringLiteral("menu ") + quoted(menu.accessibleName()));
        below([&] {
            for (const QAction* const entry : menu.actions()) {
                if (entry->isSeparator()) {
                    line(QStringLiteral("---"));
                    continue;
                }
                line(entry->text() +
                     (entry->icon().isNull() ? QString()
                                             : QStringLiteral(" [%1]").arg(entry->icon().name())) +
                     (entry->isChecked() ? QStringLiteral(", ticked") : QString()) +
                     (entry->menu() != nullptr ? QStringLiteral(", opens a menu") : QString()) +
                     (entry->isEnabled() ? QString() : QStringLiteral(", disabled")) +
                     (entry == menu.activeAction() ? QStringLiteral(", current") : QString()));
            }
        });
    }

    void choices(const QWidget& popup) {
        line(QStringLiteral("choices"));
        for (const auto* const list : popup.findChildren<QAbstractItemView*>()) {
            below([&] {
                for (int row = 0; row < list->model()->rowCount(); ++row) {
                    const QModelIndex index = list->model()->index(row, 0);
                    line(index.data().toString() +
                         (index == list->currentIndex() ? QStringLiteral(", current") : QString()));
                }
            });
        }
    }

    // Adds the visible children of a widget in reading order.
    void parts(const QWidget& whole) {
        std::vector<QWidget*> children;
        for (QObject* const child : whole.children()) {
            auto* const widget = qobject_cast<QWidget*>(child);
            if (widget != nullptr && !widget->isHidden() && !widget->isWindow()) {
                children.push_back(widget);
            }
        }
        std::stable_sort(children.begin(), children.end(), [](const QWidget* a, const QWidget* b) {
            // Two widgets that overlap vertically count as side by side.
            return a->geometry().bottom() < b->y() ||
                   (b->geometry().bottom() >= a->y() && a->x() < b->x());
        });
        // Widgets that cover others come last.
        std::stable_partition(children.begin(), children.end(), [](const QWidget* child) {
            return dynamic_cast<const Sheet*>(child) == nullptr;
        });
        for (QWidget* const child : children) {
            part(*child);
        }
    }

    [[nodiscard]] const QString& text() const { return text_; }

private:
    void part(QWidget& widget) {
        if (auto* const list = dynamic_cast<AccessibleItems*>(&widget);
            list != nullptr && qobject_cast<QComboBox*>(&widget) == nullptr) {
            state(QStringLiteral("list %1 of %2")
                      .arg(quoted(widget.accessibleName()))
                      .arg(list->itemCount()),
                  widget);
            // The items of a disabled list are left out, because they are behind a sheet.
            if (widget.isEnabled()) {
                below([&] { items(*list); });
            }
        } else if (auto* const sheet = dynamic_cast<Sheet*>(&widget)) {
            line(QStringLiteral("sheet ") + quoted(sheet->accessibleName()));
            below([&] { parts(*sheet); });
        } else if (auto* const categories = dynamic_cast<CategoryEditorList*>(&widget)) {
            line(QStringLiteral("list of %1 rows").arg(categories->rowCount()));
            below([&] { rows(*categories); });
        } else if (const auto* const picked = qobject_cast<QComboBox*>(&widget)) {
            picker(*picked);
        } else if (const auto* const written = qobject_cast<QLineEdit*>(&widget)) {
            field(*written);
        } else if (const auto* const pressed = qobject_cast<QAbstractButton*>(&widget)) {
            button(*pressed);
        } else if (const auto* const label = qobject_cast<QLabel*>(&widget)) {
            line(QStringLiteral("text ") + quoted(label->text()));
        } else {
            parts(widget);
        }
    }

    int depth_ = 0;
    QString text_;
};

}  // namespace

QString outline(Stage& stage) {
    stage.rest();
    Outline outline;
    outline.line(QStringLiteral("window ") + quoted(stage.window().windowTitle()));
    outline.below([&] { outline.parts(stage.window()); });
    for (const QWidget* const popup : stage.popups()) {
        if (const auto* const menu = qobject_cast<const QMenu*>(popup)) {
            outline.menu(*menu);
        } else {
            outline.choices(*popup);
        }
    }
    return outline.text();
}

}  // namespace tavo
