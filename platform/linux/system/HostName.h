// What this machine is called.
#pragma once

#include <string>

namespace tavo {

// As gethostname(2) says; "" when it says nothing. Any thread.
[[nodiscard]] std::string hostName();

}  // namespace tavo
