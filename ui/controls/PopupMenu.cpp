#include "ui/controls/PopupMenu.h"

#include <QApplication>
#include <QIconEngine>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "ui/accessibility/AccessibleMenu.h"
#include "ui/look/Appearance.h"
#include "ui/look/Symbols.h"

namespace tavo {
namespace {

constexpr int kBesideControl = 4;
constexpr int kTooMany = 500;  // a menu with more entries is higher than any screen
constexpr qint64 kTypingPauseMs = 1000;

// Draws a symbol in the colour of the text beside it. The colour follows the menu's palette, which
// may change while the menu is open.
class SymbolEngine final : public QIconEngine {
public:
    SymbolEngine(QString symbol, const QWidget& menu) : symbol_(std::move(symbol)), menu_(&menu) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const Appearance look(menu_ != nullptr ? menu_->palette() : QApplication::palette());
        drawSymbol(*painter, rect, symbol_,
                   mode == QIcon::Disabled   ? look.disabledText
                   : mode == QIcon::Selected ? look.textOnAccent
                                             : look.text);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new SymbolEngine(*this); }

    QString iconName() override { return symbol_; }

private:
    QString symbol_;
    QPointer<const QWidget> menu_;
};

// The text of an entry, with doubled ampersands made single.
QString shownText(const QAction& entry) {
    return QString(entry.text()).replace(QStringLiteral("&&"), QStringLiteral("&"));
}

bool hasWordBeginningWith(const QString& text, const QString& typed) {
    for (qsizetype at = text.indexOf(typed, 0, Qt::CaseInsensitive); at >= 0;
         at = text.indexOf(typed, at + 1, Qt::CaseInsensitive)) {
        if (at == 0 || !text.at(at - 1).isLetterOrNumber()) {
            return true;
        }
    }
    return false;
}

}  // namespace

PopupMenu::PopupMenu(const QString& name, QWidget* owner)
    : QMenu(owner != nullptr ? owner->window() : nullptr) {
    setAccessibleName(name);
    setSeparatorsCollapsible(false);
}

QAction* PopupMenu::addEntry(const QString& text, QStringView symbol,
                             std::function<void()> chosen) {
    auto* const entry = new QAction(text, this);
    if (!symbol.isEmpty()) {
        entry->setIcon(QIcon(new SymbolEngine(symbol.toString(), *this)));
    }
    connect(entry, &QAction::triggered, this,
            [this, chosen = std::move(chosen)] { choose(chosen); });
    addAction(entry);
    return entry;
}

QAction* PopupMenu::addTick(const QString& text, bool ticked, std::function<void()> chosen) {
    QAction* const entry = addEntry(text, ticked ? u"checkmark" : QStringView(), std::move(chosen));
    entry->setCheckable(true);
    entry->setChecked(ticked);
    // Undoes Qt's toggling: only the model changes the state, and the next menu shows it.
    connect(entry, &QAction::toggled, entry, [entry, ticked] {
        const QSignalBlocker quietly(entry);
        entry->setChecked(ticked);
    });
    return entry;
}

PopupMenu* PopupMenu::addSubmenu(const QString& text) {
    auto* const submenu = new PopupMenu(text, this);
    submenu->setTitle(text);
    addMenu(submenu);
    return submenu;
}

void PopupMenu::openAt(QPoint globalPosition, By by) {
    setAttribute(Qt::WA_DeleteOnClose);
    popup(globalPosition);
    const QList<QAction*> entries = actions();
    const auto first = std::find_if(entries.begin(), entries.end(), [](const QAction* entry) {
        return !entry->isSeparator() && entry->isEnabled();
    });
    if (by == By::Key && first != entries.end()) {
        setActiveAction(*first);
    }
}

void PopupMenu::openAt(const QWidget& control, By by) {
    QPoint corner = control.mapToGlobal(QPoint(0, control.height() + kBesideControl));
    // Measuring so many entries takes time, and the menu has no room above or below anyway.
    if (actions().size() < kTooMany) {
        ensurePolished();
        const QRect screen = control.screen()->availableGeometry();
        const int height = sizeHint().height();
        // A menu that would leave the window at the right is aligned with the control's right edge.
        const QWidget& window = *control.window();
        const int right = window.mapToGlobal(window.contentsRect().topRight()).x();
        if (corner.x() + sizeHint().width() > right + 1) {
            corner.setX(control.mapToGlobal(QPoint(control.width(), 0)).x() - sizeHint().width());
        }
        const int above = control.mapToGlobal(QPoint()).y() - kBesideControl - height;
        if (corner.y() + height > screen.bottom() && above >= screen.top()) {
            corner.setY(above);
        }
    }
    openAt(corner, by);
}

void PopupMenu::setVisible(bool visible) {
    QMenu::setVisible(visible && !isEmpty());
}

// Closes the menus before it calls the entry's function. When an accessibility client chose the
// entry, they are still open; after the pointer or a key, Qt has closed them already.
void PopupMenu::choose(const std::function<void()>& chosen) {
    const auto act = chosen;  // a copy, because closing the menu may delete it
    for (QWidget* menu = this; dynamic_cast<PopupMenu*>(menu) != nullptr;
         menu = menu->parentWidget()) {
        if (menu->isVisible()) {
            menu->close();
        }
    }
    act();
}

void PopupMenu::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const QString text = event->text();
    if (!sinceTyped_.isValid() || sinceTyped_.hasExpired(kTypingPauseMs)) {
        typed_.clear();
    }
    const bool letter = !text.isEmpty() && text.front().isPrint() &&
                        (event->modifiers() & commands) == 0 &&
                        (!text.front().isSpace() || !typed_.isEmpty());
    if (!letter) {
        QMenu::keyPressEvent(event);
        return;
    }
    sinceTyped_.start();
    typed_ += text;
    goTo(typed_);
    event->accept();
}

// After a submenu has closed, its entry has the keyboard focus again, which Qt does not announce.
void PopupMenu::hideEvent(QHideEvent* event) {
    QMenu::hideEvent(event);
    auto* const outer = qobject_cast<QMenu*>(parentWidget());
    if (outer == nullptr || !QAccessible::isActive()) {
        return;
    }
    // Delayed, because the outer menu may be about to close too.
    QMetaObject::invokeMethod(
        outer,
        [outer, entry = QPointer(menuAction())] {
            if (outer->isVisible() && entry != nullptr && outer->activeAction() == entry) {
                announceMenuEntry(*outer, static_cast<int>(outer->actions().indexOf(entry)));
            }
        },
        Qt::QueuedConnection);
}

void PopupMenu::goTo(const QString& typed) {
    const QList<QAction*> entries = actions();
    const auto current = std::find(entries.begin(), entries.end(), activeAction());
    const qsizetype from = current == entries.end() ? 0 : current - entries.begin();
    // Typing the same letter again moves to the next entry that begins with it.
    const bool next = typed.size() == 1 && current != entries.end();
    for (qsizetype step = next ? 1 : 0; step < entries.size() + (next ? 1 : 0); ++step) {
        QAction* const entry = entries.at((from + step) % entries.size());
        if (!entry->isSeparator() && entry->isEnabled() &&
            hasWordBeginningWith(shownText(*entry), typed)) {
            setActiveAction(entry);
            return;
        }
    }
}

}  // namespace tavo
