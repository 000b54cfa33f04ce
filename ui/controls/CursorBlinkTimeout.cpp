#include "ui/controls/CursorBlinkTimeout.h"

#include <QApplication>
#include <QEvent>
#include <QTimerEvent>

namespace tavo {
namespace {

constexpr int kTimeout = 10'000;  // milliseconds

}  // namespace

CursorBlinkTimeout::CursorBlinkTimeout() : flashTime_(QApplication::cursorFlashTime()) {
    idle_.start(kTimeout, Qt::CoarseTimer, this);
    qApp->installEventFilter(this);
}

bool CursorBlinkTimeout::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::InputMethod:
        case QEvent::MouseButtonPress:
        case QEvent::FocusIn:
            if (!idle_.isActive()) {
                QApplication::setCursorFlashTime(flashTime_);
            }
            idle_.start(kTimeout, Qt::CoarseTimer, this);
            break;
        default:
            break;
    }
    return false;
}

void CursorBlinkTimeout::timerEvent(QTimerEvent*) {
    idle_.stop();
    QApplication::setCursorFlashTime(0);
}

}  // namespace tavo
