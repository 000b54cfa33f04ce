// The pictures in an application bundle's icon file (.icns): a list of chunks, each a type of four
// letters, a big-endian length that counts the eight bytes before the content too, and the content.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tavo {

struct IcnsPicture {
    int side = 0;                       // pixels
    std::string_view png;               // the bytes of a PNG file; empty when `pixels` are given
    std::vector<std::uint32_t> pixels;  // ARGB, not premultiplied, side × side, the top row first
};

// The pictures of the file `bytes`, the one to show `side` pixels large first: the smallest that
// is at least as large, then the larger ones, then the smaller ones from the largest on. `side`
// of a picture is what its type says; what its PNG says is for the reader to check.
//
// PNG chunks and the run-length coded ones with an 8-bit mask are read; JPEG 2000, palettes and
// one-bit pictures are passed over. Anything may be in the bytes: chunks that do not fit end the
// reading. The PNG views are into `bytes`. Any thread.
std::vector<IcnsPicture> icnsPictures(std::string_view bytes, int side);

}  // namespace tavo
