#include "support/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace tavo {

void fatalError(std::string_view message) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
    std::fflush(stderr);
    std::_Exit(EXIT_FAILURE);
}

}  // namespace tavo
