// Makes a drawing that somebody else wrote safe to draw.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// `bytes`, an SVG file, plain or compressed, as an SVG text that draws the same but refers to
// nothing outside itself: without links to pictures in files or on the network, processing
// instructions (style sheets) and entities. Embedded PNG and JPEG pictures of bearable size stay.
// Its text stays when `text` says so: drawing it needs fonts, and those a QGuiApplication.
//
// Absent when it is not well-formed, larger than 4 MiB unpacked, nested deeper than 256, or when
// its "use" elements repeat one another more than 100,000 times in all. Any thread.
enum class SvgText { Keep, Drop };
std::optional<std::string> safeSvg(std::string_view bytes, SvgText text);

}  // namespace tavo
