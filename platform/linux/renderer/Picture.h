// Draws the bytes of a picture file as an icon: SVG with librsvg and cairo, all else with
// gdk-pixbuf.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tavo {

// The largest picture that is decoded, in pixels: four times the largest icon in use.
inline constexpr int kLargestPictureSide = 4096;

// The picture in the file `bytes`, as large as fits into a square of `side` pixels and centred in
// it: premultiplied ARGB, the top row first. Empty when the bytes are no picture, one that is too
// large, or one of which nothing can be seen. The format is told by the content: SVG, plain or
// gzipped; .icns; what gdk-pixbuf has a loader for (PNG, XPM, JPEG, ICO and others).
//
// An SVG drawing loads nothing else: librsvg refuses other files and addresses when it is given no
// base URI. May take any time and any memory, which confineRenderer() and setTimeLimit() limit. One
// thread.
std::vector<std::uint32_t> drawPicture(std::string_view bytes, int side);

}  // namespace tavo
