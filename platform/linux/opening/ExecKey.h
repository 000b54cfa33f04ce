// The command of a desktop entry as the words of a program's start (Desktop Entry Specification
// 1.5, "The Exec key").
#pragma once

#include <string>
#include <vector>

#include "platform/linux/opening/DesktopEntryCheck.h"

namespace tavo {

// The command of the entry at `path` when there is nothing to open with it: as GIO would have it,
// field codes for files and addresses stand for nothing ("%f" in quotes for an empty word), and
// unknown ones likewise. Empty when the command cannot be split into words.
[[nodiscard]] std::vector<std::string> commandWords(const std::string& path, const EntryKeys& keys);

}  // namespace tavo
