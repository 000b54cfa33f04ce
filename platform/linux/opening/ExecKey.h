// The command of a desktop entry as words (Desktop Entry Specification 1.5, "The Exec key").
#pragma once

#include <string>
#include <vector>

#include "platform/linux/entries/DesktopEntry.h"

namespace tavo {

// The words of the command of `entry`, whose file is at `path`, to open the web address `address`,
// or nothing where that is empty.
//
// They are GIO's, with one exception: within quotes %c, %i and %k stand for the text itself, where
// GIO adds quotation marks of its own. Codes for files, deprecated and unknown ones stand for
// nothing ("%f" in quotes for an empty word). Empty when the command cannot be split into words.
[[nodiscard]] std::vector<std::string> commandWords(const DesktopEntry& entry,
                                                    const std::string& path,
                                                    const std::string& address);

}  // namespace tavo
