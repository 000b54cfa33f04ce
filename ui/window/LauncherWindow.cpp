#include "ui/window/LauncherWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "platform/Compositing.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Texts.h"

namespace tavo {

using namespace metrics;

namespace {

// The window's shape, in device pixels of `scale`.
QRegion roundedRegion(const QSize& size, qreal scale = 1) {
    QPainterPath outline;
    outline.addRoundedRect(QRectF(QPointF(), QSizeF(size) * scale), kWindowRadius * scale,
                           kWindowRadius * scale);
    return QRegion(outline.toFillPolygon().toPolygon());
}

}  // namespace

LauncherWindow::LauncherWindow(Compositing& compositing)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint),
      compositing_(compositing),
      compositingChanges_(compositing.changed.subscribe([this] { followCompositing(); })) {
    setAccessibleRole(*this, QAccessible::Window);
    makeBlendable(compositing_.active());
    tintBackground();
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
}

void LauncherWindow::present() {
    if (!placed_) {
        placeFirst();
    }
    if (compositing_.active() && !isBlended()) {
        hide();  // show() then makes a new native window
    }
    if (isHidden()) {
        makeBlendable(compositing_.active());
        tintBackground();
        shapeCorners();
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
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
    // Not QKeySequence::Close and Quit, which are unset on some desktops.
    if (event->keyCombination() == (Qt::CTRL | Qt::Key_W)) {
        onClose();
    } else if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
        onQuit();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void LauncherWindow::mousePressEvent(QMouseEvent* event) {
    // Only presses that no widget in the window has accepted arrive here.
    if (event->button() == Qt::LeftButton && windowHandle() != nullptr) {
        windowHandle()->startSystemMove();
    }
}

Qt::Edges LauncherWindow::edgesAt(QPoint point) const {
    Qt::Edges edges;
    if (isMaximized() || isFullScreen() || !rect().contains(point)) {
        return edges;
    }
    const int toRight = width() - 1 - point.x();
    const int toBottom = height() - 1 - point.y();
    const int across = std::min(point.x(), toRight);
    const int down = std::min(point.y(), toBottom);
    bool vertical = across < kResizeEdge;
    bool horizontal = down < kResizeEdge;
    if (across < kWindowRadius && down < kWindowRadius) {
        // Near a round corner the distance to the outline counts, because the window may have no
        // pixels between the outline and the corner of its rectangle.
        vertical = horizontal =
            std::hypot(kWindowRadius - across, kWindowRadius - down) > kWindowRadius - kResizeEdge;
    }
    edges.setFlag(point.x() < toRight ? Qt::LeftEdge : Qt::RightEdge, vertical);
    edges.setFlag(point.y() < toBottom ? Qt::TopEdge : Qt::BottomEdge, horizontal);
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

// The content extends to the edges of the window, so presses there have to be taken first.
bool LauncherWindow::eventFilter(QObject* object, QEvent* event) {
    const bool pressed = event->type() == QEvent::MouseButtonPress;
    const bool moved = event->type() == QEvent::MouseMove || event->type() == QEvent::HoverMove;
    if (!pressed && !moved && event->type() != QEvent::Leave) {
        return false;
    }
    const auto* const widget = qobject_cast<const QWidget*>(object);
    // Leaves presses on buttons to the buttons, also at the edge of the window.
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

// Changes whether the native window has an alpha channel. Without a compositor that would only make
// it slower, because the X11 server draws it apart and copies it to the screen.
void LauncherWindow::makeBlendable(bool blendable) {
    if (testAttribute(Qt::WA_TranslucentBackground) == blendable) {
        return;
    }
    const bool another = internalWinId() != 0;
    if (another) {
        destroy();  // an existing native window cannot be changed
    }
    setAttribute(Qt::WA_NoSystemBackground, blendable);
    setAttribute(Qt::WA_TranslucentBackground, blendable);
    if (another && onAnother) {
        onAnother();
    }
}

bool LauncherWindow::isBlended() const {
    return compositing_.active() && testAttribute(Qt::WA_TranslucentBackground);
}

void LauncherWindow::followCompositing() {
    if (isHidden()) {
        return;  // present() will do the same
    }
    // A window with an alpha channel is kept when the compositor ends; a mask cuts its corners off.
    // A minimised window, or one on another desktop, is not replaced now, because the new one would
    // be shown at once: present() replaces it.
    if (compositing_.active() && !isBlended() && !isMinimized() && windowHandle()->isExposed()) {
        makeAnew();
    }
    tintBackground();
    shapeCorners();
    blurBehind();
}

// Replaces the native window by one with an alpha channel. Keeps the focus if the old one had it.
void LauncherWindow::makeAnew() {
    const bool active = isActiveWindow();
    const QRect place = geometry();
    hide();
    makeBlendable(true);
    setGeometry(place);
    setAttribute(Qt::WA_ShowWithoutActivating, !active);
    show();
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    if (active) {
        raise();
        activateWindow();
    }
}

// Sets the palette's Window colour, from whose alpha all widgets take the opacity of the
// background.
void LauncherWindow::tintBackground() {
    QPalette own;
    if (isBlended()) {
        QColor background = QGuiApplication::palette().color(QPalette::Active, QPalette::Window);
        background.setAlphaF(
            static_cast<float>(compositing_.blurs() ? kBlurredMaterial : kPlainMaterial));
        own.setColor(QPalette::Window, background);
    }
    setPalette(own);
}

void LauncherWindow::shapeCorners() {
    if (isBlended()) {
        clearMask();
    } else {
        setMask(roundedRegion(size()));
    }
}

void LauncherWindow::blurBehind() {
    if (!compositing_.blurs() || !isBlended() || internalWinId() == 0) {
        return;
    }
    std::vector<PixelRect> region;
    for (const QRect& part : roundedRegion(size(), devicePixelRatioF())) {
        region.push_back({part.x(), part.y(), part.width(), part.height()});
    }
    compositing_.blurBehind(internalWinId(), region);
}

bool LauncherWindow::event(QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        tintBackground();
    }
    return QWidget::event(event);
}

void LauncherWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    shapeCorners();
    blurBehind();
}

void LauncherWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    blurBehind();
}

}  // namespace tavo
