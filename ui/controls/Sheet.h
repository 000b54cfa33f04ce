// A modal sheet inside the window.
#pragma once

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <functional>

namespace tavo {

// Covers its parent, dims it and shows a card in the middle. While it is shown, all other children
// of the parent are disabled: they get no pointer and no key events, screen readers see them as
// disabled, and Tab stays inside the sheet. Main thread.
class Sheet : public QWidget {
public:
    // `title` is the accessible name. The sheet is hidden until present().
    Sheet(const QString& title, QWidget* parent);

    // Shows the sheet and moves the keyboard focus to firstFocus().
    void present();

    // Hides the sheet and gives the keyboard focus back to the widget that had it.
    void withdraw();

    // Called when the user wants to close the sheet, for example with Esc.
    std::function<void()> dismiss;

protected:
    // The background of the content. The derived class gives it a layout.
    [[nodiscard]] QWidget& card() const { return *card_; }

    // The size that the card should have, no larger than `available`.
    [[nodiscard]] virtual QSize cardSize(QSize available) const = 0;

    // The widget that gets the keyboard focus when the sheet is shown.
    [[nodiscard]] virtual QWidget& firstFocus() const = 0;

    // Called for the Return key, whichever widget of the sheet has the keyboard focus.
    virtual void submit() = 0;

    // Sizes and centres the card. To be called when the content's size has changed.
    void place();

    bool eventFilter(QObject* object, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void coverParent(bool cover);
    bool takeReturn(const QWidget* receiver, const QKeyEvent& key);

    QWidget* card_;
    QVariantAnimation arrival_;  // fades the shade in; from 0 to 1
    QPointer<QWidget> returnFocusTo_;
};

}  // namespace tavo
