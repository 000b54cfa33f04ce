// A button without a frame: a symbol, a text, or both.
#pragma once

#include <QAbstractButton>

namespace tavo {

// Has a faint background under the pointer and a ring while it has the keyboard focus. To be easier
// to hit, it is kMargin larger on every side than what it shows. Its accessible name is its text,
// else its tool tip. A text that does not fit ends with an ellipsis, and the tool tip has all of
// it.
class SymbolButton final : public QAbstractButton {
public:
    enum class Tone { Normal, Secondary, Destructive };

    static constexpr int kMargin = 6;

    // Shows no symbol if `symbol` is empty.
    SymbolButton(QStringView symbol, const QString& text, const QString& toolTip, QWidget* parent);

    void setFontSize(int size);
    void setSymbolSize(int size);
    void setTone(Tone tone);

    // The tool tip is on the right of the button and `neighbour`, and covers neither. Without this
    // it is below the button.
    void setToolTipBeside(const QWidget& neighbour);

    // The text as it is shown: shortened where it does not fit.
    [[nodiscard]] QString shownText() const;

    // Whether it was the pointer that pressed the button; to be asked when clicked() is sent.
    [[nodiscard]] bool pressedByPointer() const { return byPointer_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] int symbolSide() const;
    [[nodiscard]] int textStart() const;

    QString symbol_;
    int fontSize_;
    int symbolSize_;
    Tone tone_ = Tone::Normal;
    const QWidget* beside_ = nullptr;
    bool byPointer_ = false;
};

}  // namespace tavo
