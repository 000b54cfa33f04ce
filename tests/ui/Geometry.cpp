#include "tests/ui/Geometry.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <vector>

#include "ui/controls/Sheet.h"
#include "ui/controls/SymbolButton.h"
#include "ui/controls/TextLabel.h"

namespace tavo {
namespace {

QString nameOf(const QWidget& widget) {
    QString name = QString::fromLatin1(widget.metaObject()->className());
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    const QString text = label != nullptr ? label->text() : widget.accessibleName();
    if (!text.isEmpty()) {
        name += QStringLiteral(" “%1”").arg(text.left(40));
    }
    const QRect at = widget.geometry();
    return name + QStringLiteral(" at %1,%2 %3×%4")
                      .arg(at.x())
                      .arg(at.y())
                      .arg(at.width())
                      .arg(at.height());
}

bool isScrolled(const QWidget& widget) {
    const QWidget* const parent = widget.parentWidget();
    return parent != nullptr && qobject_cast<QAbstractScrollArea*>(parent->parentWidget()) &&
           static_cast<QAbstractScrollArea*>(parent->parentWidget())->viewport() == parent;
}

// Scroll bars are left out, because they are meant to cover the content.
bool isScrollBar(const QWidget& widget) {
    return widget.inherits("QScrollBar") || widget.inherits("QAbstractSlider");
}

void checkLabel(const QLabel& label, QStringList& problems) {
    const QMargins margins = label.contentsMargins();
    const QSize room = label.contentsRect().size();
    if (label.text().isEmpty()) {
        return;
    }
    if (label.wordWrap()) {
        const int needed = label.heightForWidth(label.width());
        if (needed > label.height()) {
            problems << nameOf(label) + QStringLiteral(": its lines need %1").arg(needed);
        }
        return;
    }
    const auto* const eliding = dynamic_cast<const TextLabel*>(&label);
    const QString shown = eliding != nullptr ? eliding->shownText() : label.text();
    const int needed = label.fontMetrics().horizontalAdvance(shown);
    if (needed > room.width()) {
        problems << nameOf(label) + QStringLiteral(": its text needs %1").arg(needed);
    }
    if (label.fontMetrics().height() > label.height() + margins.top() + margins.bottom()) {
        problems << nameOf(label) + QStringLiteral(": lower than its text");
    }
}

void checkButton(const QAbstractButton& button, QStringList& problems) {
    QSize needed = button.sizeHint();
    if (const auto* const quiet = dynamic_cast<const SymbolButton*>(&button)) {
        // The margins of a SymbolButton only make it easier to hit, and its text may end with an
        // ellipsis.
        needed -= QSize(SymbolButton::kMargin, 2 * SymbolButton::kMargin);
        if (quiet->shownText().endsWith(u'…') && !quiet->toolTip().isEmpty()) {
            needed.setWidth(0);
        }
    }
    if (button.width() < needed.width() || button.height() < needed.height()) {
        problems << nameOf(button) + QStringLiteral(": what it shows needs %1×%2")
                                         .arg(needed.width())
                                         .arg(needed.height());
    }
}

void checkOne(const QWidget& widget, QStringList& problems) {
    const QWidget* const parent = widget.parentWidget();
    if (parent != nullptr && !widget.isWindow() && !isScrolled(widget) && !isScrolled(*parent) &&
        !parent->rect().contains(widget.geometry())) {
        problems << nameOf(widget) + QStringLiteral(": reaches beyond ") + nameOf(*parent);
    }
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) {
        checkLabel(*label, problems);
    } else if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget)) {
        checkButton(*button, problems);
    } else if (qobject_cast<const QLineEdit*>(&widget) != nullptr ||
               qobject_cast<const QComboBox*>(&widget) != nullptr) {
        if (widget.height() < widget.fontMetrics().height()) {
            problems << nameOf(widget) + QStringLiteral(": lower than its text");
        }
    }
}

// Where nothing of another widget may be. The margins of a SymbolButton may cover what is no
// button.
QRect areaOf(const QWidget& widget, const QWidget& other) {
    const bool quiet = dynamic_cast<const SymbolButton*>(&widget) != nullptr &&
                       qobject_cast<const QAbstractButton*>(&other) == nullptr;
    constexpr int kMargin = SymbolButton::kMargin;
    return quiet ? widget.geometry().adjusted(kMargin, kMargin, -kMargin, -kMargin)
                 : widget.geometry();
}

void check(const QWidget& widget, QStringList& problems) {
    std::vector<const QWidget*> children;
    for (const QObject* const child : widget.children()) {
        const auto* const part = qobject_cast<const QWidget*>(child);
        if (part != nullptr && part->isVisible() && !part->isWindow()) {
            children.push_back(part);
        }
    }
    for (const QWidget* const child : children) {
        checkOne(*child, problems);
        for (const QWidget* const other : children) {
            if (other <= child || isScrollBar(*child) || isScrollBar(*other) ||
                dynamic_cast<const Sheet*>(child) != nullptr ||
                dynamic_cast<const Sheet*>(other) != nullptr) {
                continue;
            }
            if (areaOf(*child, *other).intersects(areaOf(*other, *child))) {
                problems << nameOf(*child) + QStringLiteral(": overlaps ") + nameOf(*other);
            }
        }
        check(*child, problems);
    }
}

}  // namespace

QStringList layoutProblems(QWidget& root) {
    QStringList problems;
    check(root, problems);
    return problems;
}

}  // namespace tavo
