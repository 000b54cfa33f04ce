// The end of the program where going on would be wrong.
#pragma once

#include <string_view>

namespace tavo {

// Writes `message` as one line on standard error and ends the process at once, with status 1:
// nothing is stored, no destructor runs. For what the program cannot be without, never for what a
// user or a file may get wrong in daily use. Any thread.
[[noreturn]] void fatalError(std::string_view message);

}  // namespace tavo
