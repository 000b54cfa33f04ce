// The name at the end of a path.
#pragma once

#include <string_view>

namespace tavo {

// The last component of `path`, slashes after it left out; empty for the root and for nothing.
constexpr std::string_view lastPathComponent(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path.substr(path.rfind('/') + 1);
}

}  // namespace tavo
