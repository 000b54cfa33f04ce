// Colours and fonts of the window, light and dark.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tavo {

// A value, made anew whenever the desktop changes its palette. Dark or light follows the palette's
// window colour; the accent is its highlight colour; the neutral colours are the window's own.
struct Appearance {
    explicit Appearance(const QPalette& palette);

    bool dark;
    QColor material;  // the window's ground
    QColor sheet;     // the ground of what lies above the window
    QColor recess;    // over the material: sidebar, search field
    QColor footer;    // over the material
    QColor border;    // the window's outline
    QColor dim;       // over everything behind a sheet
    QColor text;
    QColor secondaryText;
    QColor accent;
    QColor selection;  // behind the selected row
    QColor hover;      // behind a control under the pointer
    QColor star;
};

// The desktop's interface font at `size` logical pixels.
QFont interfaceFont(int size, QFont::Weight weight = QFont::Normal);

}  // namespace tavo
