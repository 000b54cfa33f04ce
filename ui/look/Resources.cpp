#include "ui/look/Resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImageReader>

namespace tavo {

QString resourcePath(const QString& name) {
    static const QString folder = [] {
        const QString program = QCoreApplication::applicationDirPath();
        const QString beside = program + QStringLiteral("/resources");
        return QDir(beside).exists()
                   ? beside
                   : QDir::cleanPath(program + QStringLiteral("/" TAVO_INSTALLED_RESOURCES));
    }();
    return folder + u'/' + name;
}

QImage pngResource(const QString& name) {
    QFile file(resourcePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QImageReader reader(&file, "png");
    // Without this Qt asks each of its image plugins in turn, which costs the first frame
    // milliseconds.
    reader.setAutoDetectImageFormat(false);
    return reader.read();
}

}  // namespace tavo
