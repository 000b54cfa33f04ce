#include "platform/linux/system/HostName.h"

#include <array>

#include <unistd.h>

namespace tavo {

std::string hostName() {
    std::array<char, 256> name = {};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string(name.data())
                                                            : std::string();
}

}  // namespace tavo
