#include "ui/controls/ControlPainting.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>
#include <array>
#include <cmath>

#include "ui/look/Appearance.h"
#include "ui/look/Symbols.h"
#include "ui/look/TextScale.h"

namespace tavo::controls {
namespace {

// For the shapes of disabled controls.
constexpr qreal kDisabledOpacity = 0.5;

QRectF onDevicePixels(const QPainter& painter, const QRectF& rect) {
    const QTransform toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const QRectF whole(QPointF(std::round(device.left()), std::round(device.top())),
                       QPointF(std::round(device.right()), std::round(device.bottom())));
    return toDevice.inverted().mapRect(whole);
}

// The width of a thin line: one logical pixel, rounded down to whole device pixels.
qreal hairline(const QPainter& painter) {
    const qreal scale = painter.deviceTransform().m11();
    return std::max(1.0, std::floor(scale)) / scale;
}

QRectF inset(const QRectF& rect, qreal by) {
    return rect.adjusted(by, by, -by, -by);
}

// A line of `width` just inside the edge of `rect`.
void strokeInside(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color,
                  qreal width) {
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const qreal corner = std::max(0.0, radius - width / 2);
    painter.drawRoundedRect(inset(onDevicePixels(painter, rect), width / 2), corner, corner);
}

void fillBox(QPainter& painter, const QRectF& rect, qreal radius, const QColor& background) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(onDevicePixels(painter, rect), radius, radius);
}

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

// True if the control has the keyboard focus and the user moved it with the keyboard.
bool showsFocus(const QStyleOption& option) {
    return has(option, QStyle::State_HasFocus) && has(option, QStyle::State_KeyboardFocusChange);
}

// Tints a control that is under the pointer or pressed.
void paintTouch(QPainter& painter, const QStyleOption& option, const Appearance& look) {
    if (!has(option, QStyle::State_Enabled)) {
        return;
    }
    if (has(option, QStyle::State_Sunken)) {
        fillBox(painter, option.rect, kRadius, look.pressed);
    } else if (has(option, QStyle::State_MouseOver)) {
        fillBox(painter, option.rect, kRadius, look.hover);
    }
}

void paintEntryBackground(QPainter& painter, const QRect& rect, const Appearance& look) {
    fillBox(painter, rect, kEntryRadius, look.accentBackground);
}

void drawLine(QPainter& painter, const QString& text, const QRect& box, Qt::Alignment alignment,
              const QFontMetrics& metrics, int flags = 0) {
    // For doubled ampersands, Qt uses one flag to draw a text and another one to measure it.
    const int measured = (flags & Qt::TextHideMnemonic) != 0 ? Qt::TextShowMnemonic : 0;
    painter.drawText(box,
                     static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine | flags,
                     metrics.elidedText(text, Qt::ElideRight, box.width(), measured));
}

// Two lines that meet at the middle point, as in the arrows of menus.
void paintChevron(QPainter& painter, const std::array<QPointF, 3>& points, const QColor& color) {
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(points.data(), static_cast<int>(points.size()));
}

QColor textColor(const QStyleOption& option, bool onAccent, const Appearance& look) {
    return !has(option, QStyle::State_Enabled) ? look.disabledText
           : onAccent                          ? look.textOnAccent
                                               : look.text;
}

}  // namespace

void paintBox(QPainter& painter, const QRectF& rect, qreal radius, const QColor& background,
              const QColor& border) {
    const qreal line = hairline(painter);
    painter.setPen(QPen(border, line));
    painter.setBrush(background);
    painter.drawRoundedRect(inset(onDevicePixels(painter, rect), line / 2), radius - line / 2,
                            radius - line / 2);
}

void paintButton(QPainter& painter, const QStyleOptionButton& option, const Appearance& look) {
    const bool accented = option.features.testFlag(QStyleOptionButton::DefaultButton) &&
                          has(option, QStyle::State_Enabled);
    painter.save();
    if (!has(option, QStyle::State_Enabled)) {
        painter.setOpacity(kDisabledOpacity);
    }
    if (accented) {
        fillBox(painter, option.rect, kRadius, look.accentBackground);
    } else {
        paintBox(painter, option.rect, kRadius, look.button, look.buttonBorder);
    }
    paintTouch(painter, option, look);
    if (showsFocus(option) && accented) {
        // The ring in the colour of the accent would be invisible on a button of that colour.
        strokeInside(painter, inset(option.rect, 2), kRadius - 2, look.textOnAccent,
                     look.focusWidth);
    } else if (showsFocus(option)) {
        strokeInside(painter, option.rect, kRadius, look.focusRing, look.focusWidth);
    }
    painter.restore();
}

void paintButtonText(QPainter& painter, const QStyleOptionButton& option, const Appearance& look) {
    const bool accented = option.features.testFlag(QStyleOptionButton::DefaultButton);
    painter.setPen(textColor(option, accented, look));
    drawLine(painter, option.text, option.rect.adjusted(kTextMargin, 0, -kTextMargin, 0),
             Qt::AlignHCenter, option.fontMetrics, Qt::TextHideMnemonic);
}

void paintField(QPainter& painter, const QStyleOptionFrame& option, const Appearance& look) {
    painter.save();
    if (!has(option, QStyle::State_Enabled)) {
        painter.setOpacity(kDisabledOpacity);
    }
    paintBox(painter, option.rect, kRadius, look.field, look.fieldBorder);
    if (has(option, QStyle::State_HasFocus)) {
        strokeInside(painter, option.rect, kRadius, look.focusRing, look.focusWidth);
    }
    painter.restore();
}

void paintComboBox(QPainter& painter, const QStyleOptionComboBox& option, const Appearance& look) {
    const bool enabled = has(option, QStyle::State_Enabled);
    painter.save();
    painter.setOpacity(enabled ? 1 : kDisabledOpacity);
    paintBox(painter, option.rect, kRadius, look.field, look.fieldBorder);
    paintTouch(painter, option, look);
    if (showsFocus(option)) {
        strokeInside(painter, option.rect, kRadius, look.focusRing, look.focusWidth);
    }
    painter.setOpacity(1);
    const qreal unit = grownWithText(kComboBoxArrow) / qreal(kComboBoxArrow);
    const QPointF middle(option.rect.right() - 10.5 * unit, QRectF(option.rect).center().y());
    const std::array<QPointF, 3> triangle = {middle + unit * QPointF(-3, -2),
                                             middle + unit * QPointF(3, -2),
                                             middle + unit * QPointF(0, 3)};
    painter.setPen(Qt::NoPen);
    painter.setBrush(enabled ? look.text : look.disabledText);
    painter.drawPolygon(triangle.data(), static_cast<int>(triangle.size()));
    painter.restore();
}

void paintComboBoxText(QPainter& painter, const QStyleOptionComboBox& option, const QRect& box,
                       const Appearance& look) {
    painter.setPen(textColor(option, false, look));
    drawLine(painter, option.currentText, box, Qt::AlignLeft, option.fontMetrics);
}

void paintComboBoxEntry(QPainter& painter, const QStyleOptionViewItem& option,
                        const Appearance& look) {
    const bool current = has(option, QStyle::State_Selected);
    if (current) {
        paintEntryBackground(painter, option.rect, look);
    }
    painter.setFont(option.font);
    painter.setPen(textColor(option, current, look));
    drawLine(painter, option.text, option.rect.adjusted(kEntryInset, 0, -kEntryInset, 0),
             Qt::AlignLeft, option.fontMetrics);
}

int entryTextStart(const QStyleOptionMenuItem& option) {
    const bool symbols = option.maxIconWidth > 0 || option.menuHasCheckableItems;
    return kEntryInset + (symbols ? grownWithText(kEntrySymbol) + kEntryGap : 0);
}

void paintMenuEntry(QPainter& painter, const QStyleOptionMenuItem& option, const Appearance& look) {
    const QRect rect = option.rect;
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        const qreal line = hairline(painter);
        const qreal middle = QRectF(rect).center().y();
        painter.fillRect(
            onDevicePixels(painter, QRectF(rect.left() + kEntryInset, middle - line / 2,
                                           rect.width() - 2 * kEntryInset, line)),
            look.separator);
        return;
    }
    const bool current = has(option, QStyle::State_Selected) && has(option, QStyle::State_Enabled);
    if (current) {
        paintEntryBackground(painter, rect, look);
    }
    const QColor color = textColor(option, current, look);
    const int side = grownWithText(kEntrySymbol);
    const QRect symbol(rect.left() + kEntryInset, rect.center().y() - side / 2 + 1, side, side);
    if (!option.icon.isNull()) {
        option.icon.paint(&painter, symbol, Qt::AlignCenter,
                          !has(option, QStyle::State_Enabled) ? QIcon::Disabled
                          : current                           ? QIcon::Selected
                                                              : QIcon::Normal);
    } else if (option.checked) {
        drawSymbol(painter, symbol, u"checkmark", color);
    }

    const bool submenu = option.menuItemType == QStyleOptionMenuItem::SubMenu;
    QRect box = rect.adjusted(entryTextStart(option), 0, -kEntryInset, 0);
    if (submenu) {
        const QPointF tip(rect.right() - kEntryInset + 0.5, QRectF(rect).center().y());
        paintChevron(painter, {tip + QPointF(-3.5, -3.5), tip, tip + QPointF(-3.5, 3.5)}, color);
        box.setRight(box.right() - kEntryArrow + kEntryInset);
    }
    painter.setFont(option.font);
    const qsizetype tab = option.text.indexOf(u'\t');
    if (tab >= 0) {
        painter.setPen(current                              ? look.textOnAccent
                       : has(option, QStyle::State_Enabled) ? look.secondaryText
                                                            : look.disabledText);
        drawLine(painter, option.text.mid(tab + 1), box, Qt::AlignRight, option.fontMetrics);
    }
    painter.setPen(color);
    drawLine(painter, option.text.left(tab), box, Qt::AlignLeft, option.fontMetrics,
             Qt::TextHideMnemonic);
}

void paintMenuScroller(QPainter& painter, const QRect& rect, bool down, const Appearance& look) {
    const QPointF middle = QRectF(rect).center();
    const qreal rise = down ? 2 : -2;
    paintChevron(
        painter,
        {middle + QPointF(-4, -rise), middle + QPointF(0, rise), middle + QPointF(4, -rise)},
        look.secondaryText);
}

void paintPopup(QPainter& painter, const QRectF& rect, qreal radius, bool cut,
                const Appearance& look) {
    if (cut) {
        painter.fillRect(rect, look.menu);
    }
    paintBox(painter, rect, radius, look.menu, look.menuBorder);
}

void paintThumb(QPainter& painter, const QRectF& slider, bool pressed, const Appearance& look) {
    QColor color = look.text;
    if (look.moreContrast) {
        color = pressed ? look.text : look.secondaryText;
    } else {
        color.setAlphaF(pressed ? 0.55F : 0.35F);
    }
    constexpr qreal kBeside = (kScrollBar - kScrollThumb) / 2.0;
    fillBox(painter, slider.adjusted(kBeside, 2, -kBeside, -2), kScrollThumb / 2.0, color);
}

}  // namespace tavo::controls
