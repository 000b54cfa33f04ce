#include "app/status/StatusItem.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <utility>

namespace tavo {
namespace {

// A panel puts the item in its place some time after it has taken it.
constexpr int kSettledMs = 300;

}  // namespace

StatusItem::StatusItem() {
    qApp->installEventFilter(this);
}

void StatusItem::look() {
    if (!std::exchange(looking_, true)) {
        QTimer::singleShot(kSettledMs, this, [this] {
            looking_ = false;
            tint();
        });
    }
}

void StatusItem::tint() {
    const Ground now = ground();
    if (painted_ != now) {
        painted_ = now;
        paint(now);
    }
}

bool StatusItem::eventFilter(QObject* object, QEvent* event) {
    // Panels tend to change their look along with everything else.
    if (object == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        look();
    }
    return false;
}

}  // namespace tavo
