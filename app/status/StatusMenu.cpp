#include "app/status/StatusMenu.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <chrono>
#include <utility>

#include "app/status/TrayMenuPosition.h"
#include "platform/linux/x11/XcbPointer.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kPause{20};
constexpr int kMostPauses = 250;

// For some tenths of a second after a window was hidden, Qt still takes it for the focus window.
// When Qt notices that the focus is gone, it closes all menus.
bool menusWouldClose() {
    const QWindow* const focused = QGuiApplication::focusWindow();
    return focused != nullptr && !focused->isVisible();
}

const QScreen& screenOf(QPoint point) {
    const QScreen* const screen = QGuiApplication::screenAt(point);
    return screen == nullptr ? *QGuiApplication::primaryScreen() : *screen;
}

bool isInPanel(const QPoint& point) {
    const QScreen& screen = screenOf(point);
    return screen.geometry().contains(point) && !screen.availableGeometry().contains(point);
}

}  // namespace

StatusMenu::StatusMenu(StatusItemActions actions) : actions_(std::move(actions)) {
    setAccessibleName(texts::kProgramName.toString());
    connect(addAction(texts::kOpenLauncher.toString()), &QAction::triggered, this,
            [this] { actions_.show({}); });
    addSeparator();
    QAction* const quitting = addAction(texts::kQuitLauncher.toString());
    quitting->setShortcut(Qt::CTRL | Qt::Key_Q);
    quitting->setShortcutVisibleInContextMenu(true);
    connect(quitting, &QAction::triggered, this, [this] { actions_.quit(); });
}

bool StatusMenu::canBePlaced() {
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr;
}

void StatusMenu::openBeside(const QRect& item) {
    item_ = item;
    pauses_ = 0;
    open();
}

void StatusMenu::openInPanel(const QPoint& said) {
    const QPoint pointer = QCursor::pos();
    const QPoint point = isInPanel(said) && !isInPanel(pointer) ? said : pointer;
    openBeside(trayItemAt(point, screenOf(point).availableGeometry()));
}

// Waits until the button is let go: until then the pointer belongs to the panel, and a menu without
// the pointer and the keys would stay open when the user clicks elsewhere.
void StatusMenu::open() {
    if ((menusWouldClose() || isXcbButtonHeld()) && pauses_ < kMostPauses) {
        ++pauses_;
        QTimer::singleShot(kPause, this, &StatusMenu::open);
        return;
    }
    const QScreen& screen = screenOf(item_.center());
    popup(trayMenuPosition(item_, sizeHint(), screen.geometry(), screen.availableGeometry()));
}

// An open QMenu ignores the shortcuts that it shows, so this one takes Ctrl+Q itself.
void StatusMenu::keyPressEvent(QKeyEvent* event) {
    if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
        close();
        actions_.quit();
    } else {
        QMenu::keyPressEvent(event);
    }
}

}  // namespace tavo
