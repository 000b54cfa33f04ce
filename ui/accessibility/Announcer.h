// Tells screen readers what the user cannot learn from the keyboard focus.
#pragma once

#include <QAccessible>
#include <QTimer>
#include <functional>

class QWidget;

namespace tavo {

// Says one thing at a time: half a second after the last call, when a screen reader has said what
// was typed and where the keyboard focus went. Of several results only the last one is said. While
// no screen reader is connected, a call does nothing. Main thread.
class Announcer {
public:
    // Speaks for `speaker`, which outlives the announcer.
    explicit Announcer(QWidget& speaker);

    // `text` is asked when it is time. Nothing is said when the text is empty or the window is not
    // the active one.
    void say(std::function<QString()> text);

private:
    QTimer rest_;
    std::function<QString()> text_;
};

// Makes screen readers say `text` for a widget, without interrupting themselves. Does nothing while
// none is connected. Qt has an event for it from version 6.8 on. Before, the status bar of the
// widget's window gets a notification as its last child, which is told to appear each time: Orca
// reads out a notification that appears, and says no more than its name when it is in a status bar.
// The window has to have a widget with the role StatusBar then, or nothing is said.
void announce(QWidget& speaker, const QString& text);

// The accessible interface of a widget with the role StatusBar. Qt owns the result.
QAccessibleInterface* makeAccessibleStatusBar(QWidget& statusBar);

}  // namespace tavo
