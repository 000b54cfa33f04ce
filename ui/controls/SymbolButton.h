// A quiet button: a symbol, a text, or both.
#pragma once

#include <QAbstractButton>

namespace tavo {

// Without a bezel; a faint ground under the pointer, a ring under the keyboard. It is kMargin
// larger than what it shows on every side, to be easier to hit. Its accessible name is its text,
// else its tool tip. A text that does not fit ends with an ellipsis; the tool tip then says it all.
class SymbolButton final : public QAbstractButton {
public:
    enum class Tone { Normal, Secondary, Destructive };

    static constexpr int kMargin = 6;

    // `fontSize` and `symbolSize` in logical pixels. An empty symbol is no symbol.
    SymbolButton(QStringView symbol, const QString& text, const QString& toolTip, QWidget* parent);

    void setFontSize(int size);
    void setSymbolSize(int size);
    void setTone(Tone tone);

    // The text as far as there is room for it.
    [[nodiscard]] QString shownText() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] int textStart() const;

    QString symbol_;
    int fontSize_;
    int symbolSize_;
    Tone tone_ = Tone::Normal;
};

}  // namespace tavo
