#include "app/status/XEmbedStatusItem.h"

#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QMouseEvent>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <utility>

#include "app/status/StatusSymbol.h"
#include "app/status/TrayMenuPosition.h"
#include "platform/linux/tray/XEmbedTrayIcons.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

constexpr int kFocusPauseMs = 20;
constexpr int kMostDelays = 50;

// For some tenths of a second after a window was hidden, Qt still takes it for the focus window.
// When Qt notices that the focus is gone, it closes all menus.
bool menusWouldClose() {
    const QWindow* const focused = QGuiApplication::focusWindow();
    return focused != nullptr && !focused->isVisible();
}

// Whether `object` is Qt's window in the tray, which only the name of its private class tells.
bool isEmbedded(const QObject* object) {
    return object->isWidgetType() && object->inherits("QSystemTrayIconSys");
}

}  // namespace

XEmbedStatusItem::XEmbedStatusItem(QMenu& menu, std::function<void(bool)> clicked)
    : menu_(menu), clicked_(std::move(clicked)) {
    withXEmbedTrayIcons([this] { icon_ = std::make_unique<QSystemTrayIcon>(); });
    icon_->setToolTip(texts::kProgramName.toString());
    QIcon icon;
    for (const int side : kSymbolSides) {
        icon.addPixmap(QPixmap::fromImage(statusSymbol(side)));
    }
    icon_->setIcon(icon);
    // Filters the events of all objects: the window that Qt makes in the tray, and makes again when
    // the tray returns, cannot be reached in any other way.
    qApp->installEventFilter(this);
    icon_->show();
}

XEmbedStatusItem::~XEmbedStatusItem() = default;

void XEmbedStatusItem::openMenu() {
    if (menusWouldClose() && delays_ < kMostDelays) {
        ++delays_;
        QTimer::singleShot(kFocusPauseMs, this, [this] { openMenu(); });
        return;
    }
    delays_ = 0;
    const QRect item = icon_->geometry();
    const QScreen* screen = QGuiApplication::screenAt(item.center());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    menu_.popup(
        trayMenuPosition(item, menu_.sizeHint(), screen->geometry(), screen->availableGeometry()));
}

bool XEmbedStatusItem::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return isEmbedded(object);
        case QEvent::MouseButtonRelease:
            if (isEmbedded(object)) {
                release(*static_cast<const QWidget*>(object),
                        *static_cast<const QMouseEvent*>(event));
                return true;
            }
            return false;
        case QEvent::Show:
            if (isEmbedded(object)) {
                static_cast<QWidget*>(object)->setAccessibleName(texts::kProgramName.toString());
            }
            return false;
        default:
            return false;
    }
}

void XEmbedStatusItem::release(const QWidget& embedded, const QMouseEvent& event) {
    const bool right = event.button() == Qt::RightButton;
    if ((right || event.button() == Qt::LeftButton) &&
        embedded.rect().contains(event.position().toPoint())) {
        clicked_(right);
    }
}

}  // namespace tavo
