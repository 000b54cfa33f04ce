// The pattern by which the process finder is asked for a script.
#pragma once

#include <string>
#include <string_view>

namespace tavo {

// `text` as an extended regular expression that matches it literally: a backslash before each of
// * ? + [ ( ) { } ^ $ | \ . / and before nothing else.
std::string escapedPattern(std::string_view text);

// The escaped text with its first character alone in brackets, so that the finder does not match
// its own command line, in which the pattern stands. That character is the backslash when the text
// begins with one of the above. Empty for an empty text.
std::string processPattern(std::string_view text);

}  // namespace tavo
