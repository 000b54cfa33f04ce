// Which application opens web addresses.
#pragma once

#include <string>

namespace tavo {

// The path of the desktop entry that the desktop associates with the scheme of `address`; empty
// when there is none. Main thread; reads the associations from the disk.
std::string applicationForAddress(const std::string& address);

}  // namespace tavo
