#include "ui/Resources.h"

#include <QCoreApplication>
#include <QDir>

namespace tavo {

QString resourcePath(const QString& name) {
    static const QString folder = [] {
        const QString program = QCoreApplication::applicationDirPath();
        const QString beside = program + QStringLiteral("/resources");
        return QDir(beside).exists()
                   ? beside
                   : QDir::cleanPath(program + QStringLiteral("/../share/tavolauncher"));
    }();
    return folder + u'/' + name;
}

}  // namespace tavo
