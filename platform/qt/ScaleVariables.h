// The environment variables by which the user scales Qt programs.
#pragma once

namespace tavo {

// Removes from the environment those that Qt could not use, or would end the process by: a scale
// factor (QT_SCALE_FACTOR, each of QT_SCREEN_SCALE_FACTORS) has to be a number from 0.5 to 8, a
// resolution (QT_FONT_DPI, QT_WAYLAND_FORCE_DPI) one from 48 to 768. The same goes for what Qt
// multiplies: where QT_SCALE_FACTOR times another leaves the range, the other is removed. Call it
// before the application object and before the first thread.
void removeUnusableScaleVariables();

}  // namespace tavo
