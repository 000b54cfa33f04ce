// Paths from other programs' files that must not lead out of a folder.
#pragma once

#include <algorithm>
#include <string_view>

namespace tavo {

// Whether `path`, put after a folder's path, always names something below that folder: it is
// relative, and no part of it is empty, "." or "..". Links are not looked at. Any thread.
[[nodiscard]] inline bool staysInside(std::string_view path) {
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view part = path.substr(begin, end - begin);
        if (part.empty() || part == "." || part == ".." || part.find('\0') != part.npos) {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

}  // namespace tavo
