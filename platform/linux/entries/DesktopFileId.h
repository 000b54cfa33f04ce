// File names and desktop-file ids of desktop entries end in ".desktop" (Desktop Entry Specification
// 1.5, "File naming", freedesktop.org).
#pragma once

#include <string_view>

namespace tavo {

inline constexpr std::string_view kEntrySuffix = ".desktop";

// Whether `name`, a file name, a path or an application's identifier, is that of a desktop entry.
[[nodiscard]] constexpr bool isDesktopFileName(std::string_view name) {
    return name.ends_with(kEntrySuffix);
}

// `name` without the suffix, or all of it where it has none; a view into `name`.
[[nodiscard]] constexpr std::string_view withoutEntrySuffix(std::string_view name) {
    return name.substr(0, name.size() - (isDesktopFileName(name) ? kEntrySuffix.size() : 0));
}

}  // namespace tavo
