#include "ui/look/Motion.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace tavo {
namespace {

bool& reducedSwitch() {
    static bool reduced = false;
    return reduced;
}

}  // namespace

void setReducedMotion(bool reduced) {
    reducedSwitch() = reduced;
}

bool reducedMotion() {
    return reducedSwitch();
}

int motionDuration(const QWidget& widget) {
    if (reducedMotion()) {
        return 0;
    }
    const int styles =
        widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget);
    return std::clamp(styles, 0, kMotionDuration);
}

}  // namespace tavo
