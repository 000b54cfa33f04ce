// Whether, and for how long, things in the window move.
#pragma once

class QWidget;

namespace tavo {

inline constexpr int kMotionDuration = 120;  // milliseconds

// Main thread. On until it is switched off for a user who asked the desktop for less motion; what
// moves already finishes.
void setReducedMotion(bool reduced);
[[nodiscard]] bool reducedMotion();

// How long a movement of something in `widget` takes, in milliseconds: 120, or 0 when there is
// none, because the user wants none or the widget's style has none. The interface's own style has
// it in its hint SH_Widget_Animation_Duration.
[[nodiscard]] int motionDuration(const QWidget& widget);

}  // namespace tavo
