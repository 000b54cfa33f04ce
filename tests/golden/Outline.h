// Describes in words what a window shows.
#pragma once

#include <QString>

namespace tavo {

class Stage;

// A line for each visible thing, from top to bottom: lists with their items and the selection, text
// fields, buttons, menus with symbols and ticks; and whether it is enabled and has the keyboard
// focus. Ends with a line break.
QString outline(Stage& stage);

}  // namespace tavo
