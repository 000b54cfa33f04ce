// Whether animations run, and for how long.
#pragma once

class QWidget;

namespace tavo {

inline constexpr int kMotionDuration = 120;  // milliseconds

// Switches animations off, for a user who asked the desktop for less motion, or on again. They are
// on at first. An animation that already runs is not stopped. Main thread.
void setReducedMotion(bool reduced);
[[nodiscard]] bool reducedMotion();

// The duration of an animation in `widget`, in milliseconds: at most 120. 0 (no animation) with
// reduced motion, or where the widget's style says so in SH_Widget_Animation_Duration.
[[nodiscard]] int motionDuration(const QWidget& widget);

}  // namespace tavo
