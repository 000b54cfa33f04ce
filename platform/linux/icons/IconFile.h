// Turns a picture file into an icon.
#pragma once

#include <optional>
#include <string>

#include "platform/IconSource.h"

namespace tavo {

// The picture in the file at `path`, as large as it fits into a square of `side` pixels, its
// aspect ratio kept, in the middle, the rest transparent. PNG, XPM, SVG, SVGZ and ICNS; what it is
// is told by its first bytes, whatever it is called.
//
// Absent when it is no regular file of at most 16 MiB, no such picture, broken, wider or higher
// than 4,096 pixels, or when nothing of it can be seen. What an SVG refers to outside itself is
// left out; so is its text while there is no QGuiApplication. Any thread, several at once.
std::optional<IconImage> readIconFile(const std::string& path, int side);

// What stands for applications without a picture where no theme has one.
IconImage drawGenericIcon(int side);

}  // namespace tavo
