// The launcher's own window: a frameless, rounded frame around the view.
#pragma once

#include <QWidget>
#include <functional>

namespace tavo {

class Compositing;

// Movable by every part of its content that does nothing else with the pointer, resizable at its
// edges, at least 760 × 520. It remembers no place and no size. Main thread.
class LauncherWindow final : public QWidget {
public:
    // `compositing` outlives the window.
    explicit LauncherWindow(const Compositing& compositing);

    // Takes ownership of the one view; once.
    void setContent(QWidget* content);

    // Shows it centred on the screen that holds the pointer, no larger than that screen allows,
    // when it is shown for the first time; in front with the keyboard.
    void present();

    // Called for the close button of the desktop and Ctrl+W; Ctrl+Q.
    std::function<void()> onClose;
    std::function<void()> onQuit;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] Qt::Edges edgesAt(QPoint point) const;
    void showEdgeCursor(Qt::Edges edges);
    void blendWhereTheDesktopDoes();
    void shapeCorners();
    void placeFirst();

    const Compositing& compositing_;
    QWidget* content_ = nullptr;
    Qt::Edges cursorEdges_;
    bool placed_ = false;
};

}  // namespace tavo
