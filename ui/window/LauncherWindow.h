// The launcher's own window: a frameless, rounded frame around the view.
#pragma once

#include <QWidget>
#include <functional>

#include "support/Signal.h"

namespace tavo {

class Compositing;

// Movable by every part of its content that does nothing else with the pointer, resizable at its
// edges, at least 760 × 520. It remembers no place and no size.
//
// Where the desktop blends windows its corners are smooth and its ground is translucent, elsewhere
// they are cut out of an opaque one. A compositor may come and go while it is shown. Main thread.
class LauncherWindow final : public QWidget {
public:
    // `compositing` outlives the window.
    explicit LauncherWindow(Compositing& compositing);

    // Takes ownership of the one view; once.
    void setContent(QWidget* content);

    // Shows it centred on the screen that holds the pointer, no larger than that screen allows,
    // when it is shown for the first time; in front with the keyboard.
    void present();

    // Called for the close button of the desktop and Ctrl+W; Ctrl+Q.
    std::function<void()> onClose;
    std::function<void()> onQuit;

    // Called when another window takes the place of the one that the window system knew, before
    // that is shown: what had been asked for the old one has to be asked for again.
    std::function<void()> onAnother;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] Qt::Edges edgesAt(QPoint point) const;
    void showEdgeCursor(Qt::Edges edges);
    void followCompositing();
    [[nodiscard]] bool isBlended() const;
    void makeBlendable(bool blendable);
    void makeAnew();
    void tintGround();
    void shapeCorners();
    void blurBehind();
    void placeFirst();

    Compositing& compositing_;
    Subscription compositingChanges_;
    QWidget* content_ = nullptr;
    Qt::Edges cursorEdges_;
    bool placed_ = false;
};

}  // namespace tavo
