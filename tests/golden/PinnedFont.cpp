#include "tests/golden/PinnedFont.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRawFont>
#include <QtEndian>
#include <stdexcept>

namespace tavo {
namespace {

constexpr char kConfiguration[] = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <dir>%1/fonts</dir>
  <cachedir>%1/font-cache</cachedir>
  <match target="pattern">
    <edit name="family" mode="prepend_first"><string>Inter</string></edit>
  </match>
  <match target="font">
    <edit name="antialias" mode="assign"><bool>true</bool></edit>
    <edit name="hinting" mode="assign"><bool>false</bool></edit>
    <edit name="hintstyle" mode="assign"><const>hintnone</const></edit>
    <edit name="autohint" mode="assign"><bool>false</bool></edit>
    <edit name="rgba" mode="assign"><const>none</const></edit>
    <edit name="lcdfilter" mode="assign"><const>lcdnone</const></edit>
    <edit name="embeddedbitmap" mode="assign"><bool>false</bool></edit>
  </match>
</fontconfig>
)";

}  // namespace

QStringList interFiles() {
    QStringList files;
    for (const char* const weight : {"Regular", "Medium", "SemiBold", "Bold"}) {
        files << QStringLiteral("/usr/share/fonts/opentype/inter/Inter-%1.otf")
                     .arg(QString::fromUtf8(weight));
    }
    return files;
}

void pinFont(const QString& folder) {
    QDir().mkpath(folder + QStringLiteral("/fonts"));
    QDir().mkpath(folder + QStringLiteral("/font-cache"));
    for (const QString& file : interFiles()) {
        if (QFile::exists(file)) {
            QFile::link(file, folder + QStringLiteral("/fonts/") + QFileInfo(file).fileName());
        }
    }
    const QString path = folder + QStringLiteral("/fonts.conf");
    QFile configuration(path);
    if (!configuration.open(QIODevice::WriteOnly)) {
        throw std::runtime_error("the font cannot be pinned");
    }
    configuration.write(QString::fromUtf8(kConfiguration).arg(folder).toUtf8());
    qputenv("FONTCONFIG_FILE", path.toUtf8());
    qunsetenv("FONTCONFIG_PATH");
    qunsetenv("FONTCONFIG_SYSROOT");
    // This variable can make FreeType draw outlines in other ways.
    qunsetenv("FREETYPE_PROPERTIES");
}

std::optional<QString> pinnedFont() {
    QString version;
    for (const QString& file : interFiles()) {
        const QRawFont font(file, 12);
        const QByteArray head = font.fontTable("head");
        if (head.size() < 12) {
            return std::nullopt;
        }
        // From the font's table "head": its version, a fixed-point number with sixteen binary
        // places, and the checksum of the file.
        const auto revision = qFromBigEndian<qint32>(head.constData() + 4);
        const auto checksum = qFromBigEndian<quint32>(head.constData() + 8);
        version += version.isEmpty() ? QStringLiteral("Inter %1").arg(revision / 65536.0, 0, 'f', 3)
                                     : QString();
        version += QStringLiteral(" %1").arg(checksum, 8, 16, QChar(u'0'));
    }
    return version;
}

}  // namespace tavo
