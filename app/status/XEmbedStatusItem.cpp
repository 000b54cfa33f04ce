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

#include "app/status/TrayMenuPosition.h"
#include "platform/linux/tray/XEmbedTrayIcons.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

constexpr int kFocusPauseMs = 20;
constexpr int kMostTriesToOpen = 50;

// For some tenths of a second the toolkit thinks that a window which has just gone has the keyboard
// still. When it notices, it closes all menus.
bool menusWouldClose() {
    const QWindow* const focused = QGuiApplication::focusWindow();
    return focused != nullptr && !focused->isVisible();
}

// The toolkit's window in the tray has no other name than its class's.
bool isEmbedded(const QObject* object) {
    return object->isWidgetType() && object->inherits("QSystemTrayIconSys");
}

}  // namespace

XEmbedStatusItem::XEmbedStatusItem(QMenu& menu, std::function<void(bool)> clicked)
    : menu_(menu), clicked_(std::move(clicked)) {
    withXEmbedTrayIcons([this] { icon_ = std::make_unique<QSystemTrayIcon>(); });
    icon_->setToolTip(texts::kProgramName.toString());
    paint(Ground::Unknown);
    icon_->show();
    look();
}

XEmbedStatusItem::~XEmbedStatusItem() = default;

void XEmbedStatusItem::openMenu() {
    if (menusWouldClose() && triesToOpen_ < kMostTriesToOpen) {
        ++triesToOpen_;
        QTimer::singleShot(kFocusPauseMs, this, [this] { openMenu(); });
        return;
    }
    triesToOpen_ = 0;
    const QRect item = icon_->geometry();
    const QScreen* screen = QGuiApplication::screenAt(item.center());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    menu_.popup(
        trayMenuPosition(item, menu_.sizeHint(), screen->geometry(), screen->availableGeometry()));
}

// The toolkit makes its window in the tray anew when the tray returns.
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
        case QEvent::Move:
        case QEvent::Resize:
            if (isEmbedded(object)) {
                static_cast<QWidget*>(object)->setAccessibleName(texts::kProgramName.toString());
                look();
            }
            return false;
        default:
            return StatusItem::eventFilter(object, event);
    }
}

void XEmbedStatusItem::release(const QWidget& embedded, const QMouseEvent& event) {
    const bool right = event.button() == Qt::RightButton;
    if ((right || event.button() == Qt::LeftButton) &&
        embedded.rect().contains(event.position().toPoint())) {
        clicked_(right);
    }
}

Ground XEmbedStatusItem::ground() {
    return groundOfItem(icon_->geometry());
}

void XEmbedStatusItem::paint(Ground ground) {
    QIcon icon;
    for (const int side : kSymbolSides) {
        icon.addPixmap(QPixmap::fromImage(statusSymbol(ground, side)));
    }
    icon_->setIcon(icon);
}

}  // namespace tavo
