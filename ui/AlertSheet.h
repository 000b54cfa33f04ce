// A message that must be read, as a sheet inside the window.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace tavo {

// Covers its parent, dims it and takes pointer and keyboard until it is dismissed with "OK",
// Return or Esc. The message is plain text. Main thread.
class AlertSheet final : public QWidget {
public:
    AlertSheet(const QString& title, QWidget* parent);

    // Shows `message`, in place of an older one.
    void present(const QString& message);

    // Hides it and gives the keyboard back to whom it was taken from.
    void dismiss();

    // To be called when the parent was resized.
    void place();

    // Called when the user is done with it.
    std::function<void()> onDismissed;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void applyAppearance();

    QWidget* card_;
    QLabel* title_;
    QLabel* message_;
    QPushButton* ok_;
    QPointer<QWidget> returnFocusTo_;
};

}  // namespace tavo
