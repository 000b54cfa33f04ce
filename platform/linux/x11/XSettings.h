// The settings that a desktop publishes to X clients (XSETTINGS 0.5, freedesktop.org).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavo {

// The setting `name` in the bytes of a _XSETTINGS_SETTINGS property. Absent when there is no
// setting of that name and type, or when the bytes before it do not follow the protocol.
std::optional<std::string> xSetting(std::string_view property, std::string_view name);
std::optional<std::int32_t> xNumberSetting(std::string_view property, std::string_view name);

// The bytes of the property that the settings manager publishes for the screen of `display`. Empty
// when there is no display, no settings manager or no property, when the property is longer than
// 256 KiB, and when the server does not answer within XcbConnection::kPatience. May block for that
// time, so any thread but one that paints.
std::string readXSettings(const std::string& display);

}  // namespace tavo
