// The pictures in an application bundle's icon file (.icns): a list of chunks, each a type of four
// letters, a big-endian length that counts the eight bytes before the content too, and the content.
#pragma once

#include <string_view>
#include <vector>

namespace tavo {

struct IcnsPicture {
    int side = 0;          // in pixels, by the chunk's type; the PNG itself may say otherwise
    std::string_view png;  // the bytes of a PNG file, a part of the bytes that were read
};

// The PNG pictures in the .icns file `bytes`. The first is the best one to show `side` pixels
// large: the smallest of those that are at least as large. The larger ones follow, then the smaller
// ones from the largest on. Pictures of any other coding are left out, and reading ends at the
// first chunk with a wrong length. Any thread.
std::vector<IcnsPicture> icnsPictures(std::string_view bytes, int side);

}  // namespace tavo
