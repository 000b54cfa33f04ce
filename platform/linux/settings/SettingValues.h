// What the values of desktops' settings mean. Values that make no sense count as not told. Any
// thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/DesktopSettings.h"

namespace tavo {

// Takes from `others` what `preferences` does not tell.
void fillIn(DesktopPreferences& preferences, const DesktopPreferences& others);

// DesktopPreferences::fontFamilies of a font in Pango's words, such as "Noto Sans Bold 11".
std::string familiesOfPangoFont(std::string_view font);

// Whether a GTK theme of this name is a dark one, as "Adwaita-dark" and "HighContrastInverse".
bool isDarkTheme(std::string_view name);

// 0xRRGGBB of parts from 0 to 1.
std::optional<std::uint32_t> colorOfParts(double red, double green, double blue);

// From 0.5 to 3, as GNOME offers it.
std::optional<double> textScaleOf(double factor);

// 1 for 96 dots to the inch; from 0.5 to 8.
std::optional<double> screenAndTextScaleOf(double dotsPerInch);

// Times in milliseconds. A cursor that blinks does so ten times a second at most.
std::optional<std::chrono::milliseconds> doubleClickTimeOf(std::int64_t time);
std::optional<std::chrono::milliseconds> cursorBlinkTimeOf(bool blinks, std::int64_t time);

}  // namespace tavo
