#include "ui/look/CursorBlinkTimeout.h"

#include <QApplication>
#include <QEvent>
#include <QTimerEvent>

namespace tavo {
namespace {

constexpr int kTimeout = 10'000;  // milliseconds

}  // namespace

CursorBlinkTimeout::CursorBlinkTimeout()
    : qtsFlashTime_(QApplication::cursorFlashTime()), flashTime_(qtsFlashTime_) {
    idle_.start(kTimeout, Qt::CoarseTimer, this);
    qApp->installEventFilter(this);
}

void CursorBlinkTimeout::setBlinkTime(std::optional<std::chrono::milliseconds> time) {
    flashTime_ = time ? static_cast<int>(time->count()) : qtsFlashTime_;
    if (idle_.isActive()) {
        QApplication::setCursorFlashTime(flashTime_);
    }
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
