#include "tests/ui/ScreenReader.h"

#include <QAccessible>

#include <QtGui/private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace tavo {
namespace {

QAccessible::UpdateHandler handlerBefore = nullptr;

void note(QAccessibleEvent* event) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    if (event->type() == QAccessible::Announcement) {
        ScreenReader::heard() << static_cast<QAccessibleAnnouncementEvent*>(event)->message();
        return;
    }
#endif
    const QAccessibleInterface* const source = event->accessibleInterface();
    if (source == nullptr) {
        return;
    }
    if (event->type() == QAccessible::ObjectShow && source->role() == QAccessible::Notification) {
        ScreenReader::heard() << source->text(QAccessible::Name);
    } else if (event->type() == QAccessible::Focus) {
        ScreenReader::focused() << source->text(QAccessible::Name);
    }
}

// As Qt's platform plug-in does when the first client connects or the last one leaves.
void setActive(bool active) {
    QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(active);
}

}  // namespace

ScreenReader::ScreenReader() {
    heard().clear();
    focused().clear();
    handlerBefore = QAccessible::installUpdateHandler(&note);
    setActive(true);
}

ScreenReader::~ScreenReader() {
    setActive(false);
    QAccessible::installUpdateHandler(handlerBefore);
}

QStringList& ScreenReader::heard() {
    static QStringList texts;
    return texts;
}

QStringList& ScreenReader::focused() {
    static QStringList names;
    return names;
}

}  // namespace tavo
