// Finds mistakes in the layout of any window.
#pragma once

#include <QStringList>

class QWidget;

namespace tavo {

// Looks at all visible widgets below `root` and returns a line for each one that
// - overlaps a sibling,
// - extends beyond its parent (except in scroll areas),
// - is a label whose text is cut without an ellipsis,
// - is a button smaller than what it shows, or
// - is a line edit lower than its text.
// Empty if there are no mistakes. A sheet and the widgets behind it are looked at separately,
// because a sheet is meant to cover them.
QStringList layoutProblems(QWidget& root);

}  // namespace tavo
