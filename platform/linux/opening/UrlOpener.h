// Web addresses, opened by the program that the desktop associates with them.
#pragma once

#include <string>
#include <vector>

namespace tavo {

// Main thread; takes as long as a process takes to start. Asks the desktop's associations for the
// scheme of `address` and starts what they name in a session of its own, with exactly `environment`
// ("NAME=value"). False when nothing is associated or it does not start.
bool openLink(const std::string& address, const std::vector<std::string>& environment);

}  // namespace tavo
