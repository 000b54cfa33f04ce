// The status item's symbol, and what a panel looks like beneath it.
#pragma once

#include <QImage>
#include <QRect>
#include <array>
#include <cstdint>

namespace tavo {

// What panels ask for, at a scale of one and two. In pixels.
inline constexpr std::array<int, 7> kSymbolSides = {16, 22, 24, 32, 44, 48, 64};

enum class Ground : std::uint8_t {
    Unknown,
    Light,
    Dark,
};

// The symbol, to be seen on that ground; on an unknown one, light with a dark edge, which is
// seen on any. Transparent throughout where there is no drawing of it. Main thread.
QImage statusSymbol(Ground ground, int side);

// Beneath an item of ours that the screen shows there, by its corners: the symbol leaves them
// empty. Unknown where the screen cannot be read. Logical pixels; main thread.
Ground groundOfItem(const QRect& item);

// Of a whole panel, by what most of it is: items cover little of it.
Ground groundOfPanel(const QRect& panel);

}  // namespace tavo
