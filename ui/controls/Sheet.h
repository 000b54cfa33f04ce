// What must be dealt with first, as a sheet inside the window.
#pragma once

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <functional>

namespace tavo {

// Covers its parent, dims it and shows a card in the middle. While it is there, everything else in
// the parent is disabled: neither pointer nor keyboard nor screen reader reaches behind it, and Tab
// stays within. Main thread.
class Sheet : public QWidget {
public:
    // `title` is what screen readers call it. Not shown until present().
    Sheet(const QString& title, QWidget* parent);

    // Shows it and gives the keyboard to what it wants first.
    void present();

    // Hides it and gives the keyboard back to whom it was taken from.
    void withdraw();

    // Called when the user wants to be done with it, with Esc for one.
    std::function<void()> dismiss;

protected:
    // The ground that the content lies on; it gets a layout from whoever fills it.
    [[nodiscard]] QWidget& card() const { return *card_; }

    // How large the card wants to be, at most `available`.
    [[nodiscard]] virtual QSize cardSize(QSize available) const = 0;

    // Who gets the keyboard first.
    [[nodiscard]] virtual QWidget& firstFocus() const = 0;

    // Return, wherever the keyboard is in the sheet.
    virtual void submit() = 0;

    // Sizes and centres the card; to be called when its content changed its size.
    void place();

    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void coverParent(bool cover);
    bool takeReturn(const QWidget* receiver, const QKeyEvent& key);

    QWidget* card_;
    QVariantAnimation arrival_;  // of the shade behind the card, from 0 to 1
    QPointer<QWidget> returnFocusTo_;
};

}  // namespace tavo
