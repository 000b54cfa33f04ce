// Makes a drawing that somebody else wrote safe to draw.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// `bytes`, an SVG file, plain or compressed, as an SVG text that draws the same but refers to
// nothing outside itself: without links to pictures in files or on the network, processing
// instructions (style sheets) and entities. Embedded PNG and JPEG pictures of bearable size stay.
// Without its text, too: that would need fonts, and with them a QGuiApplication that is up.
//
// Absent when it is not well-formed, larger than 4 MiB unpacked, nested deeper than 256, or when
// its "use" elements repeat one another more than 100,000 times in all. Any thread.
std::optional<std::string> safeSvg(std::string_view bytes);

}  // namespace tavo
