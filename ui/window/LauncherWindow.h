// The launcher's window: without a system frame, with round corners.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "support/Signal.h"
#include "ui/window/WindowShadow.h"

namespace tavo {

class Compositing;

// Moved by dragging any part of its content that does not use the pointer otherwise, resized at its
// edges, at least 760 × 520, or as large as the work area of its screen where that is less.
// Position and size are not stored.
//
// Where the window system blends windows, the corners are smooth; where it blurs what is behind
// them too, the background is translucent. Elsewhere a window mask cuts the corners off an opaque
// background. The window changes between these when a compositor or its blur starts or ends.
//
// Where the desktop takes a margin, the window has one, and its shadow is in it: contentsRect() is
// what the user takes for the window, and geometry() is larger. A maximised window has neither
// margin nor round corners. Main thread.
class LauncherWindow final : public QWidget {
public:
    // `compositing` outlives the window.
    explicit LauncherWindow(Compositing& compositing);

    // Takes ownership of `content`. To be called once.
    void setContent(QWidget* content);

    // Shows the window with the keyboard focus, on the screen with the pointer: centred there when
    // it was on no screen or on another one, else where it was, and always whole within the work
    // area. On Wayland the compositor chooses place and screen.
    void present();

    // `onClose` is called for the window manager's close button and for Ctrl+W, `onQuit` for
    // Ctrl+Q.
    std::function<void()> onClose;
    std::function<void()> onQuit;

    // Called when present() has shown a window that was hidden.
    std::function<void()> onShownAgain;

    // Called when a new native window has replaced the old one, before it is shown: properties set
    // on the old native window have to be set again.
    std::function<void()> onAnother;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] QRect handles() const;
    [[nodiscard]] Qt::Edges edgesAt(QPoint point) const;
    void showEdgeCursor(Qt::Edges edges);
    void followCompositing();
    [[nodiscard]] bool isBlended() const;
    void makeBlendable(bool blendable);
    void makeAnew();
    void tintBackground();
    void shape();
    void fitMargin();
    void shapeCorners();
    void blurBehind();
    [[nodiscard]] QScreen* screenToBeOn() const;
    void comeToPointer();
    bool takeScale(qreal scale);
    void limitTo(const QSize& area);
    void fitInto(const QRect& area, bool centred, const QSize& size);
    void rescaleNative();
    void followScreens();
    void fitSoon();
    void fit(bool centred);

    Compositing& compositing_;
    Subscription compositingChanges_;
    QWidget* content_ = nullptr;
    Qt::Edges cursorEdges_;
    bool presented_ = false;
    bool fitPending_ = false;
    qreal scale_ = 0;  // for which the native window has its size
    QTimer moves_;     // runs while the window is moved, of another scale than `scale_`
    // All of contentsRect():
    QSize smallest_;
    QSize wantedSize_;  // before the window had to be smaller
    QSize shrunkSize_;
    bool flush_ = false;
    QSize freeSize_;  // of contentsRect() while the window was last not flush, and of `scale_`
    WindowShadow shadow_;
};

}  // namespace tavo
