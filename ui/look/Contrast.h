// How well one colour can be read on another: the contrast ratio of the Web Content Accessibility
// Guidelines, 1 (the same) to 21 (black on white).
#pragma once

#include <QColor>
#include <initializer_list>

namespace tavo {

inline constexpr double kTextContrast = 4.5;
// For symbols, the outlines of controls, and text of 24 pixels or more.
inline constexpr double kSymbolContrast = 3;

// The same for users who want more contrast.
inline constexpr double kHighTextContrast = 7;
inline constexpr double kHighSymbolContrast = 4.5;

// The contrast ratio of two opaque colours.
[[nodiscard]] double contrast(const QColor& one, const QColor& other);

// The opaque colour that results when `color` is painted over the opaque `background`.
[[nodiscard]] QColor over(const QColor& color, const QColor& background);

// `color`, darkened or lightened by no more than needed to have a contrast of at least `ratio` with
// each of the opaque `backgrounds`. The backgrounds must be all light or all dark. Black or white
// where `ratio` cannot be reached.
[[nodiscard]] QColor legible(const QColor& color, std::initializer_list<QColor> backgrounds,
                             double ratio);

}  // namespace tavo
