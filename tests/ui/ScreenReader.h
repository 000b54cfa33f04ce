// Stands in for a screen reader: Qt tells it what happens in the program.
#pragma once

#include <QStringList>

namespace tavo {

// Connected while it exists, one at a time; before and after, no screen reader is.
class ScreenReader {
public:
    ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;
    ~ScreenReader();

    // What was announced.
    static QStringList& heard();
    // The names of what the keyboard focus was announced on.
    static QStringList& focused();
};

}  // namespace tavo
