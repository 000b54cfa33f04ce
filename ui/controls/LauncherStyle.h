// The QStyle of the program.
#pragma once

#include <QProxyStyle>

namespace tavo {

// Draws push buttons, framed line edits, combo boxes, menus, tool tips and scroll bars, light and
// dark. Qt's own style draws everything else, line edits without a frame too. Sizes follow from the
// font of each control. Nothing is animated: menus open and close at once.
//
// The corners of menus, tool tips and combo box lists are round: painted with transparency where
// the window system blends their window, else cut out by a window mask.
//
// Set before the QApplication is made, so that Qt does not load another style first. It gives the
// application's palette the window's text colours, and menus the window's font. Main thread.
class LauncherStyle final : public QProxyStyle {
public:
    LauncherStyle();

    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    void polish(QApplication* application) override;
    void polish(QWidget* widget) override;

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
