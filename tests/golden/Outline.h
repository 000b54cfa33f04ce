// What a window shows, in words.
#pragma once

#include <QString>

namespace tavo {

class Stage;

// One line for each thing that is shown, from top to bottom: lists with their items and what is
// selected, fields with their texts, buttons, menus with their symbols and ticks; and whether it
// can be used and has the keyboard. Ends with a line break.
QString outline(Stage& stage);

}  // namespace tavo
