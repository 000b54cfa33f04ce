// What is wrong with how a window is laid out, for any window.
#pragma once

#include <QStringList>

class QWidget;

namespace tavo {

// Walks every widget shown below `root` and answers one line for each that
// - overlaps a sibling,
// - reaches beyond its parent (but for what is scrolled),
// - is a label whose text does not fit and is not elided,
// - is a button that is smaller than what it shows, or
// - is a field that is lower than its text.
// Empty when all is well. A sheet and what is behind it are looked at separately: overlapping is
// what a sheet is for.
QStringList layoutProblems(QWidget& root);

}  // namespace tavo
