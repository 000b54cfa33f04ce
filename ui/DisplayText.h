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

}  // namespace tavo
