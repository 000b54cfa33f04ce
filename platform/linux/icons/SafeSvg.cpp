#include "platform/linux/icons/SafeSvg.h"

#include <QBuffer>
#include <QByteArray>
#include <QHash>
#include <QImageReader>
#include <QString>
#include <QStringList>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <cstdint>
#include <vector>

#include <zlib.h>

#include "platform/linux/icons/PictureBounds.h"

namespace tavo {
namespace {

constexpr std::size_t kLargestText = std::size_t{4} << 20U;  // bytes
constexpr int kDeepest = 256;
constexpr std::int64_t kMostDrawn = 100'000;

bool isCompressed(std::string_view bytes) {
    return bytes.starts_with("\x1f\x8b");
}

std::optional<QByteArray> decompressed(std::string_view bytes) {
    z_stream stream = {};
    constexpr int kGzip = 16 + MAX_WBITS;
    if (inflateInit2(&stream, kGzip) != Z_OK) {
        return std::nullopt;
    }
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    QByteArray text;
    int status = Z_OK;
    while (status == Z_OK && static_cast<std::size_t>(text.size()) <= kLargestText) {
        char block[32768];
        stream.next_out = reinterpret_cast<Bytef*>(block);
        stream.avail_out = sizeof block;
        status = inflate(&stream, Z_NO_FLUSH);
        text.append(block, static_cast<qsizetype>(sizeof block - stream.avail_out));
    }
    inflateEnd(&stream);
    if (status != Z_STREAM_END || static_cast<std::size_t>(text.size()) > kLargestText) {
        return std::nullopt;
    }
    return text;
}

// Counts the elements that would be drawn once all "use" elements are expanded. Elements are
// counted under the nearest one with an id, for only those can be used again.
class UseCounter {
public:
    UseCounter() : parts_(1), open_{0} {}

    void enter(const QStringList& ids, const QStringList& links) {
        std::size_t part = open_.back();
        if (!ids.isEmpty()) {
            parts_.emplace_back();
            parts_[part].inside.push_back(parts_.size() - 1);
            part = parts_.size() - 1;
        }
        for (const QString& id : ids) {
            byId_[id].push_back(part);
        }
        open_.push_back(part);
        ++parts_[part].elements;
        for (const QString& link : links) {
            parts_[part].used.push_back(link.mid(1));  // without its "#"
        }
    }

    void leave() { open_.pop_back(); }

    [[nodiscard]] bool bearable() { return count(0, 0) <= kMostDrawn; }

private:
    struct Part {
        std::int64_t elements = 0;
        std::vector<std::size_t> inside;
        std::vector<QString> used;
        std::int64_t total = -1;
        bool counting = false;
    };

    // The elements of a part when expanded. Qt does not draw a part again inside itself.
    std::int64_t count(std::size_t number, int depth) {
        if (depth > kDeepest) {
            return kMostDrawn + 1;
        }
        if (parts_[number].total >= 0 || parts_[number].counting) {
            return std::max<std::int64_t>(parts_[number].total, 0);
        }
        parts_[number].counting = true;
        std::int64_t total = parts_[number].elements;
        for (const std::size_t inside : parts_[number].inside) {
            total = std::min(total + count(inside, depth + 1), kMostDrawn + 1);
        }
        for (const QString& used : parts_[number].used) {
            for (const std::size_t target : byId_.value(used)) {
                total = std::min(total + count(target, depth + 1), kMostDrawn + 1);
            }
        }
        parts_[number].counting = false;
        parts_[number].total = total;
        return total;
    }

    std::vector<Part> parts_;
    std::vector<std::size_t> open_;
    QHash<QString, std::vector<std::size_t>> byId_;
};

// The values of all attributes that are called `name`, with any prefix: Qt's renderer may use any
// of them.
QStringList values(const QXmlStreamAttributes& attributes, QLatin1String name) {
    QStringList found;
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (attribute.name() == name) {
            found.append(attribute.value().toString());
        }
    }
    return found;
}

// Whether the link holds a PNG or JPEG picture as data. An embedded SVG does not count.
bool isEmbeddedPicture(const QString& link) {
    const qsizetype comma = link.indexOf(QLatin1Char(','));
    if (!link.startsWith(QLatin1String("data:")) || comma != link.lastIndexOf(QLatin1Char(',')) ||
        !link.left(comma).endsWith(QLatin1String(";base64"))) {
        return false;
    }
    QByteArray bytes = QByteArray::fromBase64(link.mid(comma + 1).toLatin1());
    const bool known = bytes.startsWith("\x89PNG") || bytes.startsWith("\xff\xd8\xff");
    QBuffer buffer(&bytes);
    const QSize size = known ? QImageReader(&buffer).size() : QSize();
    return isBearablePicture(size.width(), size.height());
}

bool isDropped(const QXmlStreamReader& reader, SvgText text) {
    const QStringView name = reader.name();
    if (name == QLatin1String("image")) {
        const QStringList links = values(reader.attributes(), QLatin1String("href"));
        return !std::ranges::all_of(links, isEmbeddedPicture);
    }
    return text == SvgText::Drop &&
           (name == QLatin1String("text") || name == QLatin1String("textArea"));
}

}  // namespace

std::optional<std::string> safeSvg(std::string_view bytes, SvgText keepText) {
    if (bytes.size() > kLargestText) {
        return std::nullopt;
    }
    const auto text = isCompressed(bytes)
                          ? decompressed(bytes)
                          : QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (!text) {
        return std::nullopt;
    }
    QXmlStreamReader reader(*text);
    QByteArray safe;
    QXmlStreamWriter writer(&safe);
    UseCounter uses;
    int depth = 0;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (isDropped(reader, keepText)) {
                reader.skipCurrentElement();
                continue;
            }
            if (++depth > kDeepest) {
                return std::nullopt;
            }
            const bool isUse = reader.name() == QLatin1String("use");
            uses.enter(values(reader.attributes(), QLatin1String("id")),
                       isUse ? values(reader.attributes(), QLatin1String("href")) : QStringList());
            writer.writeCurrentToken(reader);
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
            uses.leave();
            writer.writeCurrentToken(reader);
        } else if (token == QXmlStreamReader::Characters) {
            writer.writeCurrentToken(reader);
        }
    }
    if (reader.hasError() || !uses.bearable()) {
        return std::nullopt;
    }
    return safe.toStdString();
}

}  // namespace tavo
