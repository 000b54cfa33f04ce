// How well one colour can be read on another: the contrast ratio of the Web Content Accessibility
// Guidelines, 1 (the same) to 21 (black on white).
#pragma once

#include <QColor>
#include <initializer_list>

namespace tavo {

inline constexpr double kTextContrast = 4.5;
// For text of 24 pixels or more, symbols and everything else that has to be seen.
inline constexpr double kSymbolContrast = 3;

// Of two opaque colours.
[[nodiscard]] double contrast(const QColor& one, const QColor& other);

// What is seen where `color` is painted over the opaque `ground`. Opaque.
[[nodiscard]] QColor over(const QColor& color, const QColor& ground);

// `color`, or as little as it takes darker or lighter so that it reaches the ratio on each of the
// opaque grounds. It goes away from the grounds, which are all light or all dark; black or white
// is the most that can be had.
[[nodiscard]] QColor legible(const QColor& color, std::initializer_list<QColor> grounds,
                             double ratio);

}  // namespace tavo
