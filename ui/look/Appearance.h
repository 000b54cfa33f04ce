// Colours and fonts of the window, light and dark.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tavo {

// How much of a window's ground is opaque where the desktop blends windows: nearly all of it, or
// less where what lies behind is blurred.
inline constexpr double kPlainMaterial = 0.97;
inline constexpr double kBlurredMaterial = 0.9;

// A value, made anew whenever the palette changes. The palette's window colour says whether the
// look is dark and, by its opacity, how much of what lies behind the window shines through; its
// highlight is the accent; the neutral colours are the window's own.
//
// Whatever accent a user has chosen, and whatever shines through: text reaches a contrast of 4.5 on
// each ground it is meant for, symbols and large text 3. An accent that is too pale or too dark for
// that is made darker or lighter by as much as it takes.
struct Appearance {
    explicit Appearance(const QPalette& palette);

    bool dark;

    // The window.
    QColor material;  // its ground; may be translucent
    QColor recess;    // over the material: sidebar, search field
    QColor footer;    // over the material
    QColor border;    // its outline
    QColor dim;       // over everything behind a sheet

    // What lies above it: the sheets, the menus. Opaque.
    QColor sheet;
    QColor sheetBorder;
    QColor menu;
    QColor menuBorder;
    QColor list;       // the ground of a list in a sheet
    QColor separator;  // a list's outline and the lines in lists and menus

    // Controls, in a sheet or in a list in it. Opaque but for what lies over them.
    QColor field;
    QColor fieldBorder;
    QColor button;
    QColor buttonBorder;
    QColor pressed;  // over a control while it is pressed
    QColor hover;    // over a control under the pointer
    QColor focusRing;

    // Text and symbols.
    QColor text;
    QColor secondaryText;
    QColor promptText;  // of empty fields; quieter than what is typed into any of them
    QColor disabledText;
    QColor destructive;  // symbols of what deletes
    QColor star;
    QColor starOutline;  // around the star, which alone is too pale in the light; else transparent

    // The accent.
    QColor accent;             // symbols and lines
    QColor selection;          // behind the selected row, over the recess; behind a tile
    QColor accentOnSelection;  // symbols and lines in it
    QColor accentGround;       // default button, the menu's current entry, selected text
    QColor textOnAccent;       // on accentGround
};

// The window's light or dark look as a palette for the whole interface, the toolkit's own widgets
// included. It leaves the accent to the platform.
QPalette paletteOfLook(bool dark);

// The desktop's interface font at `size` logical pixels.
QFont interfaceFont(int size, QFont::Weight weight = QFont::Normal);

}  // namespace tavo
