#include "ui/look/TextScale.h"

#include <QApplication>
#include <QVariant>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <utility>

#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

using namespace metrics;

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 3;
constexpr char kTextSize[] = "tavoTextSize";

double scale = 1;

}  // namespace

double textScale() {
    return scale;
}

void setTextScale(double factor) {
    const double now = std::isnan(factor) ? 1.0 : std::clamp(factor, kSmallestScale, kLargestScale);
    if (std::exchange(scale, now) == now) {
        return;
    }
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* const widget : widgets) {
        const QVariant size = widget->property(kTextSize);
        if (size.isValid()) {
            useInterfaceFont(*widget, size.toInt(), widget->font().weight());
        }
    }
    for (QWidget* const widget : widgets) {
        widget->updateGeometry();  // layouts remember sizes
    }
    for (QWidget* const widget : widgets) {
        QEvent change(QEvent::FontChange);
        QCoreApplication::sendEvent(widget, &change);
        widget->update();
    }
}

int grownWithText(int size) {
    return static_cast<int>(std::lround(size * std::max(1.0, scale)));
}

void useInterfaceFont(QWidget& widget, int size, QFont::Weight weight) {
    widget.setProperty(kTextSize, size);
    widget.setFont(interfaceFont(size, weight));
}

int sidebarWidth() {
    constexpr int kAround = 2 * kSidebarPadding;
    // The grid needs the other half of the smallest window.
    return std::min(kAround + grownWithText(kSidebarWidth - kAround), kSmallestWidth / 2);
}

// With larger text a column holds the longest name that is shown: a name that could be read beside
// others at the usual size still can.
int smallestColumn() {
    return scale > 1 ? grownWithText(kLargestName) : kSmallestColumn;
}

int largestColumn() {
    return grownWithText(kLargestColumn);
}

}  // namespace tavo
