#include "ui/window/LauncherWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBackingStore>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "platform/Compositing.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Texts.h"
#include "ui/look/WindowShape.h"

namespace tavo {

using namespace metrics;

namespace {

QRect inDevicePixels(const QRect& rect, qreal scale) {
    return QRectF(QPointF(rect.topLeft()) * scale, QSizeF(rect.size()) * scale).toRect();
}

// A rectangle with corners of the given radius.
QRegion roundedRegion(const QRect& rect, qreal radius) {
    QPainterPath outline;
    outline.addRoundedRect(rect, radius, radius);
    return QRegion(outline.toFillPolygon().toPolygon());
}

// Without another move, one that led the window to a screen of another scale has ended. To resize
// it before would take it from under the pointer, and back to the screen that it came from.
constexpr std::chrono::milliseconds kMovesEnd{250};

// Whether a program decides where its windows are. On Wayland the compositor does, and does not
// tell where the pointer is either.
bool programsPlaceWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
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
    smallest_ = {kSmallestWidth, kSmallestHeight};
    setMinimumSize(smallest_);
    freeSize_ = {kFirstWidth, kFirstHeight};
    resize(freeSize_);
    setMouseTracking(true);  // for the cursor over the margin
    qApp->installEventFilter(this);
    followScreens();
    moves_.setSingleShot(true);
    moves_.setInterval(kMovesEnd);
    connect(&moves_, &QTimer::timeout, this, [this] { fit(false); });
}

void LauncherWindow::setContent(QWidget* content) {
    content_ = content;
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
}

void LauncherWindow::present() {
    const bool again = presented_ && isHidden();
    if (compositing_.active() && !isBlended()) {
        hide();  // show() then makes a new native window
    }
    if (isHidden()) {
        makeBlendable(compositing_.active());
        tintBackground();
        shape();
    }
    comeToPointer();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    presented_ = true;
    if (again && onShownAgain) {
        onShownAgain();
    }
}

QScreen* LauncherWindow::screenToBeOn() const {
    QScreen* const pointed =
        programsPlaceWindows() ? QGuiApplication::screenAt(QCursor::pos()) : nullptr;
    return pointed != nullptr ? pointed : screen();
}

void LauncherWindow::comeToPointer() {
    const QScreen* const target = screenToBeOn();
    if (target == nullptr) {
        return;
    }
    const bool elsewhere = programsPlaceWindows() && (!presented_ || target != screen());
    if (isFlush(*this) && isVisible() && !elsewhere) {
        return;
    }
    if (!programsPlaceWindows()) {
        limitTo(target->availableSize());
        fitInto(target->availableGeometry(), false, contentsRect().size());
        return;
    }
    const bool rescaled = takeScale(target->devicePixelRatio());
    if (rescaled || isFlush(*this)) {
        // Qt resizes a hidden native window for another screen's scale, and no shown one; and
        // window managers leave a maximised one on its screen.
        hide();
    }
    const Qt::WindowStates state = windowState();
    if (elsewhere) {
        setWindowState(state & ~(Qt::WindowMaximized | Qt::WindowFullScreen));
    }
    limitTo(target->availableSize());
    fitInto(target->availableGeometry(), elsewhere || rescaled,
            rescaled ? freeSize_ : contentsRect().size());
    setWindowState(state);
    if (rescaled) {
        rescaleNative();
    }
}

void LauncherWindow::limitTo(const QSize& area) {
    smallest_ = QSize(kSmallestWidth, kSmallestHeight).boundedTo(area);
    setMinimumSize(smallest_.grownBy(contentsMargins()));
}

// Whether the scale changes by it.
bool LauncherWindow::takeScale(qreal scale) {
    const qreal before = std::exchange(scale_, scale);
    return before != scale;
}

// Makes what the user sees of the window lie within `area`, as large as `size` or as fits, in the
// middle or as near to its place as possible. It has its size again when that fits again.
void LauncherWindow::fitInto(const QRect& area, bool centred, const QSize& size) {
    if (isFlush(*this)) {
        return;
    }
    if (!programsPlaceWindows()) {
        resize(size.boundedTo(area.size()).grownBy(contentsMargins()));
        return;
    }
    if (size != shrunkSize_) {
        wantedSize_ = size;
    }
    shrunkSize_ = wantedSize_.boundedTo(area.size());
    QRect place(geometry().marginsRemoved(contentsMargins()).topLeft(), shrunkSize_);
    if (centred) {
        place.moveTopLeft(area.topLeft() +
                          QPoint(area.width() - place.width(), area.height() - place.height()) / 2);
    }
    place.moveLeft(std::max(area.left(), std::min(place.left(), area.right() + 1 - place.width())));
    place.moveTop(std::max(area.top(), std::min(place.top(), area.bottom() + 1 - place.height())));
    const QRect whole = place.marginsAdded(contentsMargins());
    if (whole != geometry()) {
        setGeometry(whole);
    }
}

// Qt leaves the native window, its mask and its buffer as large as they were for the scale before.
void LauncherWindow::rescaleNative() {
    clearMask();  // shape() sets it again
    if (windowHandle() != nullptr) {
        windowHandle()->setGeometry(geometry());
    }
    if (backingStore() != nullptr) {
        backingStore()->resize(size());
        update();
    }
}

void LauncherWindow::followScreens() {
    const auto follow = [this](const QScreen* screen) {
        for (const auto change : {&QScreen::geometryChanged, &QScreen::availableGeometryChanged}) {
            connect(screen, change, this, [this] { fitSoon(); });
        }
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, [this] { fitSoon(); });
        fitSoon();
    };
    for (const QScreen* const screen : QGuiApplication::screens()) {
        follow(screen);
    }
    connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { fitSoon(); });
}

// Later, because Qt tells of one change by several signals, and moves the window in between.
void LauncherWindow::fitSoon() {
    if (!std::exchange(fitPending_, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                fitPending_ = false;
                fit(true);
            },
            Qt::QueuedConnection);
    }
}

// A hidden window is made to fit when it is shown. `centred`: in the middle if its scale has
// changed.
void LauncherWindow::fit(bool centred) {
    if (isVisible() && screen() != nullptr) {
        const bool rescaled = takeScale(devicePixelRatioF());
        limitTo(screen()->availableSize());
        fitInto(screen()->availableGeometry(), rescaled && centred,
                rescaled ? freeSize_ : contentsRect().size());
        if (rescaled) {
            rescaleNative();
        }
        if (rescaled && programsPlaceWindows()) {
            shape();  // elsewhere it changes the size of a window that is being shown
        }
    }
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

// The part of the window that takes input: what the user sees, and a strip around it by which the
// window is resized.
QRect LauncherWindow::handles() const {
    const int outside = std::min(contentsMargins().left(), kResizeOutside);
    return contentsRect().adjusted(-outside, -outside, outside, outside);
}

Qt::Edges LauncherWindow::edgesAt(QPoint point) const {
    Qt::Edges edges;
    const QRect visible = contentsRect();
    if (isFlush(*this) || !handles().contains(point)) {
        return edges;
    }
    const int toLeft = point.x() - visible.left();
    const int toTop = point.y() - visible.top();
    const int toRight = visible.right() - point.x();
    const int toBottom = visible.bottom() - point.y();
    const int across = std::min(toLeft, toRight);
    const int down = std::min(toTop, toBottom);
    bool vertical = across < kResizeEdge;
    bool horizontal = down < kResizeEdge;
    if (across < kWindowRadius && down < kWindowRadius) {
        // Near a round corner the distance to the outline counts, because the window may have no
        // pixels between the outline and the corner of its rectangle.
        vertical = horizontal =
            std::hypot(kWindowRadius - across, kWindowRadius - down) > kWindowRadius - kResizeEdge;
    }
    edges.setFlag(toLeft < toRight ? Qt::LeftEdge : Qt::RightEdge, vertical);
    edges.setFlag(toTop < toBottom ? Qt::TopEdge : Qt::BottomEdge, horizontal);
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
    shape();
}

// Replaces the native window by one with an alpha channel. Keeps the focus if the old one had it.
void LauncherWindow::makeAnew() {
    const bool active = isActiveWindow();
    const QRect place = geometry();
    hide();
    makeBlendable(true);
    setGeometry(place);
    fitMargin();
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
    if (isBlended() && compositing_.blurs() && !moreContrast()) {
        QColor background = QGuiApplication::palette().color(QPalette::Active, QPalette::Window);
        background.setAlphaF(static_cast<float>(kBlurredMaterial));
        own.setColor(QPalette::Window, background);
    }
    setPalette(own);
}

void LauncherWindow::shape() {
    fitMargin();
    shapeCorners();
    blurBehind();
}

// Gives the window its margin or takes it away; what the user sees of the window stays in its
// place, unless the window manager has just decided about that.
void LauncherWindow::fitMargin() {
    const bool flush = isFlush(*this);
    const bool freed = std::exchange(flush_, flush) && !flush;
    const int before = contentsMargins().left();
    const int margin = isBlended() && compositing_.takesMargins() && !flush ? kShadowMargin : 0;
    const QRect given = geometry();
    const QRect place = given.marginsRemoved(contentsMargins());
    if (margin != before) {
        setContentsMargins(margin, margin, margin, margin);
        setMinimumSize(smallest_.grownBy(contentsMargins()));
    }
    if (internalWinId() != 0 && (margin > 0 || before > 0)) {
        const qreal scale = devicePixelRatioF();
        const QRect input = inDevicePixels(handles(), scale);
        compositing_.setMargin(internalWinId(),
                               {.width = qRound(margin * scale),
                                .input = {input.x(), input.y(), input.width(), input.height()},
                                .smallestWidth = qRound(smallest_.width() * scale),
                                .smallestHeight = qRound(smallest_.height() * scale)});
    }
    if (margin == before || flush) {
        return;
    }
    // A window manager may give back the place from before with the margin, without it, or later.
    const QSize whole = freeSize_.grownBy(contentsMargins());
    if (!freed || given.size() == freeSize_) {
        setGeometry(place.marginsAdded(contentsMargins()));
    } else if (given.size() != whole) {
        resize(whole);
    }
}

void LauncherWindow::shapeCorners() {
    if (isBlended() || isFlush(*this)) {
        clearMask();
    } else {
        setMask(roundedRegion(rect(), kWindowRadius));
    }
}

void LauncherWindow::blurBehind() {
    if (!compositing_.blurs() || !isBlended() || internalWinId() == 0) {
        return;
    }
    std::vector<PixelRect> region;
    const qreal scale = devicePixelRatioF();
    const QRect visible = inDevicePixels(QRect(QPoint(), contentsRect().size()), scale);
    for (const QRect& part : roundedRegion(visible, windowRadius(*this) * scale)) {
        region.push_back({part.x(), part.y(), part.width(), part.height()});
    }
    compositing_.blurBehind(internalWinId(), region);
}

bool LauncherWindow::event(QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        tintBackground();
    } else if (event->type() == QEvent::WindowStateChange) {
        shape();
        update();
    } else if (event->type() == QEvent::ScreenChangeInternal && screen() != nullptr) {
        limitTo(screen()->availableSize());
        if (!programsPlaceWindows()) {
            scale_ = devicePixelRatioF();
            fitSoon();
        } else if (scale_ != devicePixelRatioF()) {
            moves_.start();
        }
    }
    return QWidget::event(event);
}

void LauncherWindow::paintEvent(QPaintEvent* event) {
    const QRect visible = contentsRect();
    const QRect& painted = event->rect();
    const bool insideShadow =
        visible.adjusted(kWindowRadius, 0, -kWindowRadius, 0).contains(painted) ||
        visible.adjusted(0, kWindowRadius, 0, -kWindowRadius).contains(painted);
    if (!contentsMargins().isNull() && !insideShadow) {
        QPainter painter(this);
        shadow_.paint(painter, visible);
    }
}

void LauncherWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    if (moves_.isActive()) {
        moves_.start();
    }
}

void LauncherWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // The size of a maximised window may be known before it is known to be maximised.
    const QSize size = contentsRect().size();
    const bool ofItsScale = !programsPlaceWindows() || scale_ == devicePixelRatioF();
    if (!isFlush(*this) && ofItsScale &&
        size.boundedTo(screen()->availableSize()) != screen()->availableSize()) {
        freeSize_ = size;
    }
    shape();
}

void LauncherWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    shape();
}

}  // namespace tavo
