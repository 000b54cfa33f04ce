// The command of a desktop entry as words (Desktop Entry Specification 1.5, "The Exec key").
#pragma once

#include <string>
#include <vector>

#include "platform/linux/entries/DesktopEntry.h"

namespace tavo {

// The words of the command of `entry`, whose file is at `path`. The command is to open the web
// address `address`; empty: nothing.
//
// The words are those that GIO makes, with one exception: within quotes %c, %i and %k stand for the
// bare text, to which GIO adds quotation marks of its own. Codes for files, deprecated and unknown
// codes stand for nothing (a quoted "%f" for an empty word). Empty when the command cannot be split
// into words.
[[nodiscard]] std::vector<std::string> commandWords(const DesktopEntry& entry,
                                                    const std::string& path,
                                                    const std::string& address);

}  // namespace tavo
