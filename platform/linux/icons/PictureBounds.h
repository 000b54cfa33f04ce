// The largest picture that is decoded.
#pragma once

namespace tavo {

// In pixels: four times the largest icon in use, 64 MiB when decoded.
inline constexpr int kLargestPictureSide = 4096;

// False also for the empty size that QImageReader has for an unreadable picture.
constexpr bool isBearablePicture(int width, int height) {
    return width > 0 && height > 0 && width <= kLargestPictureSide && height <= kLargestPictureSide;
}

}  // namespace tavo
