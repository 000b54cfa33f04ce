// Text from outside, made fit to be shown.
#pragma once

#include <QString>
#include <string_view>

namespace tavo {

// `utf8` as one line of plain text: line breaks and tabs become spaces, other control characters
// their visible pictures, and characters that would turn the direction of the text around them
// are left out. Longer texts are cut after `longest` characters, with an ellipsis: nobody reads
// more, and measuring it would cost.
QString displayText(std::string_view utf8, qsizetype longest = 400);

// The same for a message of several lines: line breaks stay.
QString displayMessage(std::string_view utf8, qsizetype longest = 2000);

// A name for a menu entry: an ampersand is a letter and not a key. As long as displayText() leaves
// it, for screen readers; a menu draws what it has room for.
QString menuText(std::string_view utf8);

// `text` as a tool tip: plain whatever it holds, and never wider than a few words.
QString toolTipText(const QString& text);

// `text` with places where a line may break inside long words and after the slashes of paths.
QString breakable(const QString& text);

}  // namespace tavo
