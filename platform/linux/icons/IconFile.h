// Reads a picture file as an icon.
#pragma once

#include <optional>
#include <string>

#include "platform/IconSource.h"

namespace tavo {

// The picture in the file at `path`, scaled to fit into a square of `side` pixels and centred in
// it, the rest transparent. The format is PNG, XPM, SVG, SVGZ or ICNS, recognised by the first
// bytes of the file; its name does not matter.
//
// Absent when the file is not regular, larger than 16 MiB, broken or of another format, when the
// picture is wider or higher than 4,096 pixels, or when all of it is transparent. Pictures outside
// the file to which an SVG refers are left out, and so is its text while there is no
// QGuiApplication. Any thread, several at once.
std::optional<IconImage> readIconFile(const std::string& path, int side);

// The generic icon of an application, for sessions whose icon theme has none.
IconImage drawGenericIcon(int side);

}  // namespace tavo
