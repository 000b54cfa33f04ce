// Paints the standard controls for LauncherStyle: frames, menu entries, scroll bar thumbs.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;
class QStyleOptionButton;
class QStyleOptionComboBox;
class QStyleOptionFrame;
class QStyleOptionMenuItem;
class QStyleOptionViewItem;

// Sizes are in logical pixels. Nothing here keeps state. Lines are painted on whole device pixels
// at every scale.
namespace tavo {

struct Appearance;

namespace controls {

inline constexpr int kRadius = 6;          // corners of fields, combo boxes, buttons, tool tips
inline constexpr int kTextInset = 9;       // from the frame of a field or combo box to its text
inline constexpr int kTextMargin = 5;      // above and below the text of a control
inline constexpr int kButtonInset = 15;    // beside a button's text
inline constexpr int kComboBoxArrow = 24;  // around a combo box's triangle; grows with text
inline constexpr int kMenuRadius = 10;     // corners of menus and of the lists of combo boxes
inline constexpr int kMenuPadding = 5;     // from a menu's edge to its entries
inline constexpr int kEntryRadius = 6;     // corners of the current entry's background
inline constexpr int kEntryInset = 10;     // beside an entry
inline constexpr int kEntryMargin = 4;     // above and below an entry's text
inline constexpr int kEntrySymbol = 16;    // the size of an entry's symbol
inline constexpr int kEntryGap = 8;        // from symbol to text
inline constexpr int kEntryArrow = 20;     // the width of a submenu's arrow
inline constexpr int kWidestEntry = 420;   // longer texts end with an ellipsis
inline constexpr int kDivider = 11;        // the height of a separator
inline constexpr int kScrollBar = 10;      // the width of a scroll bar
inline constexpr int kScrollThumb = 6;     // the width of a scroll bar's thumb
inline constexpr int kShortestThumb = 28;

// A box with round corners; the border is painted inside `rect`.
void paintBox(QPainter& painter, const QRectF& rect, qreal radius, const QColor& background,
              const QColor& border);

void paintButton(QPainter& painter, const QStyleOptionButton& option, const Appearance& look);
void paintButtonText(QPainter& painter, const QStyleOptionButton& option, const Appearance& look);
void paintField(QPainter& painter, const QStyleOptionFrame& option, const Appearance& look);
void paintComboBox(QPainter& painter, const QStyleOptionComboBox& option, const Appearance& look);
// The text of a combo box, in `box`.
void paintComboBoxText(QPainter& painter, const QStyleOptionComboBox& option, const QRect& box,
                       const Appearance& look);
// One entry in the list of a combo box.
void paintComboBoxEntry(QPainter& painter, const QStyleOptionViewItem& option,
                        const Appearance& look);

// The distance of a menu entry's text from the entry's left end, where a tick or a symbol may be.
int entryTextStart(const QStyleOptionMenuItem& option);
void paintMenuEntry(QPainter& painter, const QStyleOptionMenuItem& option, const Appearance& look);
void paintMenuScroller(QPainter& painter, const QRect& rect, bool down, const Appearance& look);

// The background of a menu, of a combo box's list or of a tool tip. `cut` is true where a window
// mask cuts the corners off; then the background is painted up to the mask, which may be a little
// outside the rounded shape.
void paintPopup(QPainter& painter, const QRectF& rect, qreal radius, bool cut,
                const Appearance& look);

// The thumb of a vertical scroll bar, centred across `slider`.
void paintThumb(QPainter& painter, const QRectF& slider, bool pressed, const Appearance& look);

}  // namespace controls
}  // namespace tavo
