// Colours and fonts of the window, light and dark.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tavo {

// The opacity of a window's background where the desktop blurs what is behind the window. Anywhere
// else the background is opaque, because sharp contours behind the text would disturb it.
inline constexpr double kBlurredMaterial = 0.9;

// The colours that follow from one palette. Made again whenever the palette changes. The palette's
// Window colour says whether the look is dark; its alpha is the opacity of the window's background.
// The palette's Highlight is the accent. All other colours are fixed here.
//
// Text has a contrast of at least 4.5 on each background that it is meant for, symbols and large
// text have 3, whatever is behind the translucent window. An accent that is too pale or too dark
// for that is made darker or lighter, by no more than needed.
//
// With more contrast, text has 7, symbols and the outlines of controls have 4.5, lines are where
// otherwise only two shades meet, and the ring of the keyboard focus is twice as wide.
struct Appearance {
    explicit Appearance(const QPalette& palette);

    bool dark;
    bool moreContrast;  // as moreContrast() was when this was made

    // Colours of the window.
    QColor material;  // the window's background; may be translucent
    QColor shade;     // over the material, under the recess: in the dark look, where the recess
                      // alone could not be told from the material; transparent in the light look
    QColor recess;    // over the material and the shade: sidebar, search field
    QColor footer;    // over the material
    QColor outline;   // around the search field, beside the sidebar and around selected rows;
                      // transparent without more contrast
    QColor hairline;  // inside the window's edge, against backgrounds like the window's own
    QColor dim;       // over the rest of the window while a sheet is open

    // Colours of sheets and menus. Opaque.
    QColor sheet;
    QColor sheetBorder;
    QColor menu;
    QColor menuBorder;
    QColor list;       // the background of a list in a sheet
    QColor separator;  // the outline of a list; the lines in lists and menus

    // Colours of controls in sheets. Opaque, except `pressed` and `hover`, which are painted over
    // them.
    QColor field;
    QColor fieldBorder;
    QColor button;
    QColor buttonBorder;
    QColor pressed;  // over a control while it is pressed
    QColor hover;    // over a control under the pointer
    QColor focusRing;
    double focusWidth;  // of the ring, in logical pixels

    // Colours of text and symbols.
    QColor text;
    QColor secondaryText;
    QColor promptText;  // in empty fields; fainter than typed text
    QColor disabledText;
    QColor destructive;  // symbols of buttons that delete
    QColor star;
    QColor starOutline;  // around the star, which is too pale on a light background; transparent in
                         // the dark look

    // Colours made from the accent.
    QColor accent;             // symbols and lines
    QColor selection;          // behind the selected row (over the recess) and the current tile
    QColor accentOnSelection;  // symbols and lines on a selection
    QColor accentBackground;   // default button, current menu entry, selected text
    QColor textOnAccent;       // on accentBackground
};

// Whether the user wants more contrast; one switch for the program. A new palette of the
// application must follow a change, because widgets make their Appearance when the palette changes.
// Main thread.
[[nodiscard]] bool moreContrast();
void setMoreContrast(bool more);

// The palette of the light or the dark look, for Qt's own widgets too. Its Highlight is the
// platform's.
QPalette paletteOfLook(bool dark);

// The desktop's interface font. `size` in logical pixels, for text of the usual size (TextScale). A
// widget with this font follows when the desktop gets another one, and its size with
// useInterfaceFont() alone.
QFont interfaceFont(int size, QFont::Weight weight = QFont::Normal);

}  // namespace tavo
