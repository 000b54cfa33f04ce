// A text in one of the window's own colours.
#pragma once

#include <QLabel>

#include "ui/look/Appearance.h"

namespace tavo {

// Plain text, whatever it holds. A line that does not fit ends with an ellipsis; with word wrap,
// whoever places it gives it the height that its lines need. Main thread.
class TextLabel final : public QLabel {
public:
    using Color = QColor Appearance::*;

    TextLabel(const QFont& font, Color color, QWidget* parent);

    // The text as far as there is room for it.
    [[nodiscard]] QString shownText() const;

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyColor();

    Color color_;
};

}  // namespace tavo
