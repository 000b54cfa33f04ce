#include "ui/window/ApplicationIcon.h"

#include <QGuiApplication>
#include <QIcon>

#include "support/ApplicationId.h"
#include "ui/look/Resources.h"
#include "ui/window/FirstFrame.h"

namespace tavo {

QIcon applicationIcon() {
    QIcon icon;
    // All sizes are stored in a property of the X11 window. Larger sizes would take up the server's
    // memory.
    for (const int side : {16, 22, 24, 32, 48, 64, 128}) {
        const QPixmap picture = QPixmap::fromImage(pngResource(
            QStringLiteral("icons/%1/%2.png").arg(side).arg(QLatin1String(kApplicationId))));
        if (!picture.isNull()) {
            icon.addPixmap(picture);
        }
    }
    return icon;
}

void useApplicationIconAfterFirstFrame(QWidget& window) {
    afterFirstFrame(window, [] { QGuiApplication::setWindowIcon(applicationIcon()); });
}

}  // namespace tavo
