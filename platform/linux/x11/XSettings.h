// The settings that a desktop publishes to X clients (XSETTINGS 0.5, freedesktop.org).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// The string setting `name` in the bytes of a _XSETTINGS_SETTINGS property. Absent when it is not
// there, is no string, or when the bytes before it are not what the protocol has.
std::optional<std::string> xSetting(std::string_view property, std::string_view name);

// The bytes of the property that the settings manager of `display` publishes for the display's
// screen. Empty without a display, a manager, a property of at most 256 KiB, and when the server
// does not answer in the time that XcbConnection gives it. Any thread but one that paints.
std::string readXSettings(const std::string& display);

}  // namespace tavo
