// A slim scroll bar that lies over what it scrolls.
#pragma once

#include <QScrollBar>

class QAbstractScrollArea;

namespace tavo {

// Lies at the right edge of `area` and mirrors its vertical scroll bar, which stays switched off:
// so the content keeps the full width. Shown only when there is something to scroll.
class ThinScrollBar final : public QScrollBar {
public:
    explicit ThinScrollBar(QAbstractScrollArea& area);

    // To be called when the area was resized.
    void place();

protected:
    void paintEvent(QPaintEvent* event) override;
    void sliderChange(SliderChange change) override;

private:
    [[nodiscard]] QRect thumb() const;

    QAbstractScrollArea& area_;
};

}  // namespace tavo
