// A label in one of the colours of Appearance.
#pragma once

#include <QLabel>

#include "ui/look/Appearance.h"

namespace tavo {

// Shows plain text, also when it looks like HTML. A single line that does not fit ends with an
// ellipsis. With word wrap, the layout has to give it the height of all its lines. Main thread.
class TextLabel final : public QLabel {
public:
    using Color = QColor Appearance::*;

    TextLabel(const QFont& font, Color color, QWidget* parent);

    // The text as it is shown: shortened where it does not fit.
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
