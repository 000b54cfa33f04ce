// The status item's symbol.
#pragma once

#include <QImage>
#include <array>

namespace tavo {

// The sizes that panels ask for, at a scale of one and two. In pixels.
inline constexpr std::array<int, 7> kSymbolSides = {16, 22, 24, 32, 44, 48, 64};

// The symbol, light with a dark edge, which is legible on light and on dark panels. `side` pixels
// wide and high. Fully transparent where the symbol's file is missing. Main thread.
QImage statusSymbol(int side);

}  // namespace tavo
