// Which entries of an application folder are application bundles.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// The application's name when the folder entry `entry` is a bundle: the entry without its
// extension, which is exactly "app". None for everything else. Only the name is looked at.
std::optional<std::string> bundleName(std::string_view entry);

}  // namespace tavo
