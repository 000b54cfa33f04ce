// What the launcher and its icon renderer say to each other, over a stream socket that is the
// renderer's standard output.
//
// The launcher sends an IconRequest and then the bytes of a path; the renderer answers with the
// number of pixels, 0 or side × side, and then that many pixels as IconImage has them. One request
// at a time. Numbers are in the machine's own byte order, since both ends run on it. The renderer
// ends when the socket does.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo {

struct IconRequest {
    std::uint32_t side = 0;        // pixels, 1 to kLargestIconSide
    std::uint32_t pathLength = 0;  // bytes, at most kLongestIconPath
};

using IconPixelCount = std::uint32_t;

inline constexpr std::uint32_t kLargestIconSide = 2048;
inline constexpr std::size_t kLongestIconPath = 4096;

}  // namespace tavo
