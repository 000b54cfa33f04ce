// How large a picture may be to be decoded at all.
#pragma once

namespace tavo {

// Four times the largest icon that is in use; 64 MiB when decoded.
inline constexpr int kLargestPictureSide = 4096;

// False also for the size of what cannot be read.
constexpr bool isBearablePicture(int width, int height) {
    return width > 0 && height > 0 && width <= kLargestPictureSide && height <= kLargestPictureSide;
}

}  // namespace tavo
