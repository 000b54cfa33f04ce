#include "ui/controls/CursorBlinkTimeout.h"

#include <QApplication>
#include <QEvent>
#include <QTimerEvent>

namespace tavo {
namespace {

constexpr int kUntilRest = 10'000;  // milliseconds

}  // namespace

CursorBlinkTimeout::CursorBlinkTimeout() : blinking_(QApplication::cursorFlashTime()) {
    resting_.start(kUntilRest, Qt::CoarseTimer, this);
    qApp->installEventFilter(this);
}

CursorBlinkTimeout::~CursorBlinkTimeout() {
    qApp->removeEventFilter(this);
}

bool CursorBlinkTimeout::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::InputMethod:
        case QEvent::MouseButtonPress:
        case QEvent::FocusIn:
            if (!resting_.isActive()) {
                QApplication::setCursorFlashTime(blinking_);
            }
            resting_.start(kUntilRest, Qt::CoarseTimer, this);
            break;
        default:
            break;
    }
    return false;
}

void CursorBlinkTimeout::timerEvent(QTimerEvent*) {
    resting_.stop();
    QApplication::setCursorFlashTime(0);
}

}  // namespace tavo
