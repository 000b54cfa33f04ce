#include "ui/ThinScrollBar.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace tavo {
namespace {

constexpr int kWidth = 10;
constexpr int kThumbWidth = 6;

}  // namespace

ThinScrollBar::ThinScrollBar(QAbstractScrollArea& area)
    : QScrollBar(Qt::Vertical, &area), area_(area) {
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    QScrollBar* const mirrored = area.verticalScrollBar();
    connect(mirrored, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, mirrored, &QScrollBar::setValue);
    connect(mirrored, &QScrollBar::rangeChanged, this, [this, mirrored](int least, int most) {
        setPageStep(mirrored->pageStep());
        setSingleStep(mirrored->singleStep());
        setRange(least, most);
        setVisible(most > least);
    });
    hide();
}

void ThinScrollBar::place() {
    setGeometry(area_.width() - kWidth, 0, kWidth, area_.height());
    raise();
}

QRect ThinScrollBar::thumb() const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect slider =
        style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    return {(kWidth - kThumbWidth) / 2, slider.top(), kThumbWidth, slider.height()};
}

void ThinScrollBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(isSliderDown() ? 0.55F : 0.35F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(thumb(), kThumbWidth / 2.0, kThumbWidth / 2.0);
}

void ThinScrollBar::sliderChange(SliderChange change) {
    QScrollBar::sliderChange(change);
    update();
}

}  // namespace tavo
