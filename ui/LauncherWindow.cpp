#include "ui/LauncherWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

#include "platform/Compositing.h"
#include "ui/AccessibleItems.h"
#include "ui/Metrics.h"
#include "ui/Texts.h"

namespace tavo {

using namespace metrics;

LauncherWindow::LauncherWindow(const Compositing& compositing)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint), compositing_(compositing) {
    setAccessibleRole(*this, QAccessible::Window);
    blendWhereTheDesktopDoes();
    setWindowTitle(texts::kProgramName.toString());
    setAccessibleName(texts::kProgramName.toString());
    setMinimumSize(kSmallestWidth, kSmallestHeight);
    resize(kFirstWidth, kFirstHeight);
    qApp->installEventFilter(this);
}

void LauncherWindow::setContent(QWidget* content) {
    content_ = content;
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    content->setFocus();
}

void LauncherWindow::present() {
    if (!placed_) {
        placeFirst();
    }
    if (isHidden()) {
        blendWhereTheDesktopDoes();
    }
    show();
    raise();
    activateWindow();
}

void LauncherWindow::placeFirst() {
    placed_ = true;
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    if (screen == nullptr) {
        return;
    }
    const QRect area = screen->availableGeometry();
    const QSize size(std::max(kSmallestWidth, std::min(kFirstWidth, area.width())),
                     std::max(kSmallestHeight, std::min(kFirstHeight, area.height())));
    setGeometry(area.x() + (area.width() - size.width()) / 2,
                area.y() + (area.height() - size.height()) / 2, size.width(), size.height());
}

void LauncherWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    onClose();
}

void LauncherWindow::keyPressEvent(QKeyEvent* event) {
    // Spelt out: not every desktop knows these standard keys.
    if (event->keyCombination() == (Qt::CTRL | Qt::Key_W)) {
        onClose();
    } else if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
        onQuit();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void LauncherWindow::mousePressEvent(QMouseEvent* event) {
    // What reaches the window itself was of no use to anything in it.
    if (event->button() == Qt::LeftButton && windowHandle() != nullptr) {
        windowHandle()->startSystemMove();
    }
}

Qt::Edges LauncherWindow::edgesAt(QPoint point) const {
    Qt::Edges edges;
    if (isMaximized() || isFullScreen() || !rect().contains(point)) {
        return edges;
    }
    edges.setFlag(Qt::LeftEdge, point.x() < kResizeEdge);
    edges.setFlag(Qt::RightEdge, point.x() >= width() - kResizeEdge);
    edges.setFlag(Qt::TopEdge, point.y() < kResizeEdge);
    edges.setFlag(Qt::BottomEdge, point.y() >= height() - kResizeEdge);
    return edges;
}

void LauncherWindow::showEdgeCursor(Qt::Edges edges) {
    if (edges == cursorEdges_) {
        return;
    }
    if (cursorEdges_ != Qt::Edges()) {
        QGuiApplication::restoreOverrideCursor();
    }
    cursorEdges_ = edges;
    if (edges == Qt::Edges()) {
        return;
    }
    const bool horizontal = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool vertical = edges & (Qt::TopEdge | Qt::BottomEdge);
    const bool falling =
        edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge);
    QGuiApplication::setOverrideCursor(horizontal && vertical
                                           ? (falling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor)
                                       : horizontal ? Qt::SizeHorCursor
                                                    : Qt::SizeVerCursor);
}

// The content reaches the window's edges, so the edges take the pointer before the content does.
bool LauncherWindow::eventFilter(QObject* object, QEvent* event) {
    const bool pressed = event->type() == QEvent::MouseButtonPress;
    const bool moved = event->type() == QEvent::MouseMove || event->type() == QEvent::HoverMove;
    if (!pressed && !moved && event->type() != QEvent::Leave) {
        return false;
    }
    const auto* const widget = qobject_cast<const QWidget*>(object);
    // A button at the edge stays a button.
    if (widget == nullptr || widget->window() != this ||
        qobject_cast<const QAbstractButton*>(widget) != nullptr) {
        return false;
    }
    if (event->type() == QEvent::Leave) {
        if (widget == this) {
            showEdgeCursor({});
        }
        return false;
    }
    const auto* const pointer = static_cast<const QSinglePointEvent*>(event);
    const Qt::Edges edges = edgesAt(mapFromGlobal(pointer->globalPosition()).toPoint());
    if (moved) {
        if (pointer->buttons() == Qt::NoButton) {
            showEdgeCursor(edges);
        }
        return false;
    }
    if (edges == Qt::Edges() || pointer->button() != Qt::LeftButton || windowHandle() == nullptr) {
        return false;
    }
    return windowHandle()->startSystemResize(edges);
}

// Where nothing blends, a window that could be blended is only slower: the server keeps it apart
// and copies it to the screen.
void LauncherWindow::blendWhereTheDesktopDoes() {
    const bool blended = compositing_.active();
    if (testAttribute(Qt::WA_TranslucentBackground) == blended) {
        return;
    }
    if (internalWinId() != 0) {
        destroy();  // the window on the screen stays what it was made as
    }
    setAttribute(Qt::WA_NoSystemBackground, blended);
    setAttribute(Qt::WA_TranslucentBackground, blended);
    shapeCorners();
}

void LauncherWindow::shapeCorners() {
    if (compositing_.active() && testAttribute(Qt::WA_TranslucentBackground)) {
        clearMask();
        return;
    }
    QPainterPath outline;
    outline.addRoundedRect(rect(), kWindowRadius, kWindowRadius);
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
}

void LauncherWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    shapeCorners();
}

}  // namespace tavo
