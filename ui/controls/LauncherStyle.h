// The standard controls in the launcher's own look.
#pragma once

#include <QProxyStyle>

class QLineEdit;

namespace tavo {

// Push buttons, framed line edits, combo boxes, menus, tool tips and scroll bars, light and dark;
// everything else, line edits without a frame among it, looks as the toolkit's own style has it.
// Sizes follow from the font of each control. The controls never move by themselves: menus are
// there at once, and gone at once.
//
// The corners of menus, tool tips and the lists of combo boxes are round: painted where the window
// that they belong to is blended with what lies behind it, cut out where it is not.
//
// Install it before the application object is made, which then does not look for another one. It
// gives the application's palette the window's text colours, and makes menus speak the window's
// font. Main thread.
class LauncherStyle final : public QProxyStyle {
public:
    LauncherStyle();

    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    void polish(QApplication* application) override;
    void polish(QWidget* widget) override;
    using QProxyStyle::unpolish;
    void unpolish(QWidget* widget) override;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override;

    bool eventFilter(QObject* object, QEvent* event) override;
};

}  // namespace tavo
