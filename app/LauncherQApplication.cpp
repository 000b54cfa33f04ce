#include "app/LauncherQApplication.h"

#include <QEvent>
#include <QSessionManager>

namespace tavo {

LauncherQApplication::LauncherQApplication(int& argc, char** argv) : QApplication(argc, argv) {
    setQuitOnLastWindowClosed(false);
    setQuitLockEnabled(false);
    const auto neverRestart = [](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
    };
    connect(this, &QGuiApplication::commitDataRequest, this, neverRestart, Qt::DirectConnection);
    connect(this, &QGuiApplication::saveStateRequest, this, neverRestart, Qt::DirectConnection);
}

bool LauncherQApplication::event(QEvent* event) {
    if (event->type() == QEvent::Quit) {
        endAtOnce();
        return true;
    }
    return QApplication::event(event);
}

void LauncherQApplication::endAtOnce() {
    toldToEnd_ = true;
    exit(0);
}

}  // namespace tavo
