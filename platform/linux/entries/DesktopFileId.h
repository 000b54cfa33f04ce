// What the files and the identifiers of desktop entries are called (Desktop Entry Specification
// 1.5, "File naming").
#pragma once

#include <string_view>

namespace tavo {

inline constexpr std::string_view kEntrySuffix = ".desktop";

// Whether a file of that name or path is a desktop entry's, or an identifier an entry's.
[[nodiscard]] constexpr bool isDesktopFileName(std::string_view name) {
    return name.ends_with(kEntrySuffix);
}

// `name` less the suffix; all of it when it has none. A part of what it is given.
[[nodiscard]] constexpr std::string_view withoutEntrySuffix(std::string_view name) {
    return name.substr(0, name.size() - (isDesktopFileName(name) ? kEntrySuffix.size() : 0));
}

}  // namespace tavo
