// The name of this machine.
#pragma once

#include <string>

namespace tavo {

// What gethostname(2) answers; "" when it fails. Any thread.
[[nodiscard]] std::string hostName();

}  // namespace tavo
