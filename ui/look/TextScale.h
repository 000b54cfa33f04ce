// How much larger than usual the user wants text.
#pragma once

#include <QFont>

class QWidget;

namespace tavo {

// 1 is the usual size, and what there is at first. Main thread, as all here.
double textScale();

// Gives all widgets with fonts of useInterfaceFont() their new size, and sends every widget a
// FontChange event. A factor that is no number counts as 1, others as the nearest from 0.5 to 3.
void setTextScale(double factor);

// The size, in logical pixels, of something that has to hold text: as many times as large as usual,
// and never smaller.
int grownWithText(int size);

// Gives the widget interfaceFont(), now and whenever the size of text changes.
void useInterfaceFont(QWidget& widget, int size, QFont::Weight weight = QFont::Normal);

// Sizes that follow from the size of text, as metrics has them where it is the usual one.
int sidebarWidth();
int smallestColumn();
int largestColumn();

}  // namespace tavo
