// The settings that a desktop publishes to X clients (XSETTINGS 0.5, freedesktop.org).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// The string setting `name` in the bytes of a _XSETTINGS_SETTINGS property. Absent when it is not
// there, is no string, or when the bytes before it are not what the protocol has.
std::optional<std::string> xSetting(std::string_view property, std::string_view name);

// The bytes of the property that the settings manager of `display` (none for "") publishes for
// the display's screen. Absent without a display, a manager or a property of at most 256 KiB.
// Opens a connection of its own and waits for the server: any thread but one that paints.
std::optional<std::string> readXSettings(const std::string& display);

}  // namespace tavo
