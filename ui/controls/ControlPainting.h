// How the standard controls look: frames, menu entries, the thumb of a scroll bar.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;
class QStyleOptionButton;
class QStyleOptionComboBox;
class QStyleOptionFrame;
class QStyleOptionMenuItem;
class QStyleOptionViewItem;

// Painted with `LauncherStyle`'s sizes and an appearance's colours; nothing here keeps state.
// Lines lie on whole device pixels at every scale.
namespace tavo {

struct Appearance;

namespace controls {

inline constexpr int kRadius = 6;         // fields, pickers, buttons, tool tips
inline constexpr int kTextInset = 9;      // from the frame of a field or picker to its text
inline constexpr int kTextMargin = 5;     // above and below the text of a control
inline constexpr int kButtonInset = 15;   // beside a button's text
inline constexpr int kPickerArrow = 24;   // the space of a picker's triangle
inline constexpr int kMenuRadius = 10;    // menus and the lists of pickers
inline constexpr int kMenuPadding = 5;    // from a menu's edge to its entries
inline constexpr int kEntryRadius = 6;    // the current entry
inline constexpr int kEntryInset = 10;    // beside an entry
inline constexpr int kEntryMargin = 4;    // above and below an entry's text
inline constexpr int kEntrySymbol = 16;   // as large as the symbols of the window
inline constexpr int kEntryGap = 8;       // from symbol to text
inline constexpr int kEntryArrow = 20;    // the space of a submenu's arrow
inline constexpr int kWidestEntry = 420;  // longer texts end with an ellipsis
inline constexpr int kDivider = 11;       // the height of a menu's dividing line
inline constexpr int kScrollBar = 10;     // across a scroll bar
inline constexpr int kScrollThumb = 6;    // across its thumb
inline constexpr int kShortestThumb = 28;

// A rounded box, its border inside `rect`.
void paintBox(QPainter& painter, const QRectF& rect, qreal radius, const QColor& ground,
              const QColor& border);

void paintButton(QPainter& painter, const QStyleOptionButton& option, const Appearance& look);
void paintButtonText(QPainter& painter, const QStyleOptionButton& option, const Appearance& look);
void paintField(QPainter& painter, const QStyleOptionFrame& option, const Appearance& look);
void paintPicker(QPainter& painter, const QStyleOptionComboBox& option, const Appearance& look);
// The picked text in `box`.
void paintPicked(QPainter& painter, const QStyleOptionComboBox& option, const QRect& box,
                 const Appearance& look);
// One entry of a picker's list.
void paintChoice(QPainter& painter, const QStyleOptionViewItem& option, const Appearance& look);

// Where a menu's text begins and what of the entry is beside it.
int entryTextStart(const QStyleOptionMenuItem& option);
void paintMenuEntry(QPainter& painter, const QStyleOptionMenuItem& option, const Appearance& look);
void paintMenuScroller(QPainter& painter, const QRect& rect, bool down, const Appearance& look);

// The ground of a menu, a picker's list or a tool tip. `cut` says that its window has its corners
// cut out, so that the ground reaches into them.
void paintPopup(QPainter& painter, const QRectF& rect, qreal radius, bool cut,
                const Appearance& look);

// A thumb in the middle of `slider`.
void paintThumb(QPainter& painter, const QRectF& slider, Qt::Orientation orientation, bool pressed,
                const Appearance& look);

}  // namespace controls
}  // namespace tavo
