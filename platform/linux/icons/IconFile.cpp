#include "platform/linux/icons/IconFile.h"

#include <QBuffer>
#include <QByteArray>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <variant>

#include "platform/linux/bundles/Icns.h"
#include "platform/linux/icons/PictureBounds.h"
#include "platform/linux/icons/SafeSvg.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

constexpr std::size_t kLargestFile = std::size_t{16} << 20U;  // bytes
constexpr std::string_view kPngStart = "\x89PNG\r\n\x1a\n";

QByteArray borrowed(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

// PNG and XPM begin with the size of the picture, which is checked before anything is decoded.
QImage decoded(std::string_view bytes, const char* format) {
    QByteArray data = borrowed(bytes);
    QBuffer buffer(&data);
    QImageReader reader(&buffer, format);
    const QSize size = reader.size();
    return isBearablePicture(size.width(), size.height()) ? reader.read() : QImage();
}

QImage scaled(const QImage& picture, int side) {
    if (picture.isNull()) {
        return {};
    }
    const QSize fitting =
        picture.size().scaled(side, side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    const QImage plain = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    return plain.size() == fitting
               ? plain
               : plain.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                     .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage transparentSquare(int side) {
    QImage square(side, side, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    return square;
}

// Whether Qt can draw text. Without a QGuiApplication it has no fonts and aborts the process at the
// first letter.
bool drawsText() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

QImage drawn(std::string_view bytes, int side) {
    const auto text = safeSvg(bytes, drawsText() ? SvgText::Keep : SvgText::Drop);
    QSvgRenderer renderer;
    if (!text || !renderer.load(borrowed(*text))) {
        return {};
    }
    const QSizeF size = renderer.viewBoxF().size();
    if (!std::isfinite(size.width()) || !std::isfinite(size.height()) || size.isEmpty()) {
        return {};
    }
    QImage square = transparentSquare(side);
    QPainter painter(&square);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(&painter, QRectF(0, 0, side, side));
    return square;
}

QImage fromIcns(std::string_view bytes, int side) {
    for (const IcnsPicture& picture : icnsPictures(bytes, side)) {
        const QImage image = decoded(picture.png, "png");
        if (!image.isNull()) {
            return scaled(image, side);
        }
    }
    return {};
}

QImage pictureFrom(std::string_view bytes, int side) {
    if (bytes.starts_with(kPngStart)) {
        return scaled(decoded(bytes, "png"), side);
    }
    if (bytes.starts_with("icns")) {
        return fromIcns(bytes, side);
    }
    if (bytes.starts_with("/* XPM")) {
        return scaled(decoded(bytes, "xpm"), side);
    }
    return drawn(bytes, side);
}

// `picture` in the middle of a transparent square of `side` pixels, into which it fits.
IconImage centred(const QImage& picture, int side) {
    const auto pixels = static_cast<std::size_t>(side);
    IconImage icon{side, std::vector<std::uint32_t>(pixels * pixels, 0)};
    const auto left = static_cast<std::size_t>((side - picture.width()) / 2);
    const auto top = static_cast<std::size_t>((side - picture.height()) / 2);
    for (int y = 0; y < picture.height(); ++y) {
        std::memcpy(&icon.pixels[(top + static_cast<std::size_t>(y)) * pixels + left],
                    picture.constScanLine(y),
                    static_cast<std::size_t>(picture.width()) * sizeof(std::uint32_t));
    }
    return icon;
}

bool canBeSeen(const IconImage& icon) {
    return std::ranges::any_of(icon.pixels, [](std::uint32_t pixel) { return pixel >> 24U != 0; });
}

}  // namespace

std::optional<IconImage> readIconFile(const std::string& path, int side) {
    const auto file = readBoundedFile(path, kLargestFile);
    const auto* const bytes = std::get_if<std::string>(&file);
    if (bytes == nullptr) {
        return std::nullopt;
    }
    const QImage picture = pictureFrom(*bytes, side);
    if (picture.isNull()) {
        return std::nullopt;
    }
    IconImage icon = centred(picture, side);
    if (!canBeSeen(icon)) {
        return std::nullopt;
    }
    return icon;
}

IconImage drawGenericIcon(int side) {
    QImage square = transparentSquare(side);
    QPainter painter(&square);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / 64.0, side / 64.0);
    QLinearGradient grey(0, 4, 0, 60);
    grey.setColorAt(0, QColor(0xb4, 0xb8, 0xbf));
    grey.setColorAt(1, QColor(0x8a, 0x8f, 0x98));
    painter.setPen(Qt::NoPen);
    painter.setBrush(grey);
    painter.drawRoundedRect(QRectF(4, 4, 56, 56), 13, 13);
    painter.setBrush(QColor(255, 255, 255, 217));
    painter.drawRoundedRect(QRectF(16, 18, 32, 28), 4, 4);
    painter.setBrush(QColor(0x8a, 0x8f, 0x98));
    painter.drawRect(QRectF(16, 25, 32, 2));
    painter.end();
    return centred(square, side);
}

}  // namespace tavo
