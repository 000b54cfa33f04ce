#include "ui/look/Resources.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QtEndian>
#include <cstdint>

namespace tavo {
namespace {

std::uint32_t numberAt(const QByteArray& bytes, qsizetype at) {
    return qFromBigEndian<std::uint32_t>(bytes.constData() + at);
}

// The checksum of PNG (ISO/IEC 15948), that of Ethernet.
std::uint32_t checksum(QByteArrayView bytes) {
    std::uint32_t sum = ~0U;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~sum;
}

// Whether `bytes` are a PNG file as it was written: the signature, then pieces that each give
// their length, a name of four letters, their content and a checksum, up to the one named IEND.
bool isWholePng(const QByteArray& bytes) {
    constexpr qsizetype kName = 4;
    constexpr qsizetype kAround = 12;  // length, name and checksum
    const QByteArray signature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");
    if (!bytes.startsWith(signature)) {
        return false;
    }
    qsizetype at = signature.size();
    while (bytes.size() - at >= kAround) {
        const auto length = static_cast<qsizetype>(numberAt(bytes, at));
        if (length > bytes.size() - at - kAround) {
            return false;
        }
        const auto piece = QByteArrayView(bytes).sliced(at + 4, kName + length);
        if (checksum(piece) != numberAt(bytes, at + 4 + kName + length)) {
            return false;
        }
        if (piece.first(kName) == "IEND") {
            return true;
        }
        at += kAround + length;
    }
    return false;
}

// What the toolkit thinks of a picture that it cannot read would go to standard error.
class Quiet {
public:
    Quiet()
        : before_(
              qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {})) {
    }
    ~Quiet() { qInstallMessageHandler(before_); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    QtMessageHandler before_;
};

}  // namespace

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
    QByteArray bytes = file.readAll();
    // The library below tells standard error, whoever asks, when it finds a file damaged.
    if (!isWholePng(bytes)) {
        return {};
    }
    QBuffer buffer(&bytes);
    // Its format is known: asking every image plugin whether it is theirs takes milliseconds of the
    // first frame.
    QImageReader reader(&buffer, "png");
    reader.setAutoDetectImageFormat(false);
    const Quiet quiet;
    return reader.read();
}

}  // namespace tavo
