// Makes an SVG from an unknown author safe to render.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// The SVG or SVGZ file `bytes` as an SVG text that looks the same but refers to nothing outside
// itself: links to pictures in files or on the network, processing instructions (style sheets) and
// entities are removed. Embedded PNG and JPEG pictures stay where isBearablePicture(). `text` tells
// whether text elements stay: to render them Qt needs fonts, and so a QGuiApplication.
//
// Absent when the file is not well-formed, larger than 4 MiB unpacked, nested deeper than 256, or
// when its "use" elements expand to more than 100,000 elements. Any thread.
enum class SvgText { Keep, Drop };
std::optional<std::string> safeSvg(std::string_view bytes, SvgText text);

}  // namespace tavo
