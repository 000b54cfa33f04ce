#include "platform/linux/bundles/PropertyList.h"

#include <QXmlStreamReader>
#include <optional>

#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr int kDeepestNesting = 64;

using Strings = std::map<std::string, std::string>;

// Reads token by token without recursion: a deeply nested document costs no stack.
class Reader {
public:
    explicit Reader(const std::string& bytes)
        : xml_(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))) {}

    Strings strings() {
        while (!xml_.atEnd()) {
            if (!take(xml_.readNext())) {
                return {};
            }
        }
        return xml_.hasError() ? Strings() : std::move(strings_);
    }

private:
    // Handles one token; false ends the reading.
    bool take(QXmlStreamReader::TokenType token) {
        switch (token) {
            case QXmlStreamReader::StartElement:
                return begin();
            case QXmlStreamReader::EndElement:
                end();
                return true;
            case QXmlStreamReader::Characters:
                if (depth_ == kValueDepth) {
                    text_ += xml_.text();
                }
                return true;
            case QXmlStreamReader::DTD:
                // Property lists name the public DTD. Entities that a document declares itself
                // could expand without end.
                return xml_.entityDeclarations().isEmpty() && xml_.notationDeclarations().isEmpty();
            case QXmlStreamReader::EntityReference:
                return false;
            default:
                return true;
        }
    }

    bool begin() {
        ++depth_;
        if (depth_ > kDeepestNesting || (depth_ == 1 && xml_.name() != u"plist") ||
            (depth_ == 2 && (sawRoot_ || xml_.name() != u"dict"))) {
            return false;
        }
        sawRoot_ = sawRoot_ || depth_ == 2;
        if (depth_ == kValueDepth) {
            element_ = xml_.name().toString();
            text_.clear();
        }
        // Elements are not allowed inside <key> and <string>.
        return depth_ <= kValueDepth || !(isKey() || isString());
    }

    void end() {
        if (depth_ == kValueDepth) {
            if (isKey()) {
                key_ = text_.toStdString();
            } else {
                if (key_ && isString()) {
                    strings_[*key_] = text_.toStdString();
                } else if (key_) {
                    strings_.erase(*key_);
                }
                key_.reset();
            }
        }
        --depth_;
    }

    [[nodiscard]] bool isKey() const { return element_ == u"key"; }
    [[nodiscard]] bool isString() const { return element_ == u"string"; }

    // The depth of keys and values, which are inside <plist> (1) and <dict> (2).
    static constexpr int kValueDepth = 3;

    QXmlStreamReader xml_;
    int depth_ = 0;
    bool sawRoot_ = false;
    QString element_;  // the innermost element at kValueDepth
    QString text_;
    std::optional<std::string> key_;  // the last key, until its value has been read
    Strings strings_;
};

}  // namespace

Strings readPropertyListStrings(const std::string& file) {
    const auto bytes = readBoundedFile(file, kLargestFile);
    if (!std::holds_alternative<std::string>(bytes)) {
        return {};
    }
    return Reader(std::get<std::string>(bytes)).strings();
}

}  // namespace tavo
