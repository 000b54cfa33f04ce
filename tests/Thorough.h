// How much a test repeats itself.
#pragma once

#include <cstdlib>
#include <string_view>

namespace tavo {

// Whether TAVO_THOROUGH=1 is set, as `./test thorough` does. Then tests that compare with another
// implementation try every combination of their cases, and otherwise a part in which each case
// still occurs.
inline bool isThorough() {
    const char* const variable = std::getenv("TAVO_THOROUGH");
    return variable != nullptr && std::string_view(variable) == "1";
}

}  // namespace tavo
