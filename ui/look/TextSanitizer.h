// Makes names and messages of other programs safe to show.
#pragma once

#include <QString>
#include <string_view>

namespace tavo {

// `utf8` as one line of plain text. Line breaks and tabs become spaces. Other control characters
// become their visible pictures (U+2400 and following). Characters that change the direction of the
// text around them are left out. A text of more than `longest` UTF-16 units is cut and ends with an
// ellipsis: measuring a very long text would be slow.
QString displayText(std::string_view utf8, qsizetype longest = 400);

// Like displayText(), but keeps line breaks.
QString displayMessage(std::string_view utf8, qsizetype longest = 2000);

// displayText() as the text of a QAction: ampersands are doubled, so that none becomes a shortcut.
// Not shortened any further, because screen readers read it whole; a menu shortens what it draws.
QString menuText(std::string_view utf8);

// `text` as a tool tip: shown as plain text even when it looks like HTML, and in lines of at most
// 320 logical pixels.
QString toolTipText(const QString& text);

// `text` with zero-width spaces inside long words and after slashes, where a line may break.
QString breakable(const QString& text);

}  // namespace tavo
