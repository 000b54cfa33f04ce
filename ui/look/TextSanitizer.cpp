#include "ui/look/TextSanitizer.h"

#include <QStringList>
#include <QTextLayout>

#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

bool turnsDirection(char16_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// The first `longest` UTF-16 units, without half a surrogate pair at the end, and an ellipsis.
QString cut(QString text, qsizetype longest) {
    text.truncate(longest);
    if (!text.isEmpty() && text.back().isHighSurrogate()) {
        text.chop(1);
    }
    return text + u'…';
}

QString shortened(const QString& text, qsizetype longest) {
    return text.size() > longest ? cut(text, longest) : text;
}

QString cleaned(std::string_view utf8, qsizetype longest, bool keepLineBreaks) {
    // No character is longer than four bytes, so that bytes after this many are never shown.
    const std::string_view head = utf8.substr(0, static_cast<std::size_t>(longest) * 4);
    QString text = QString::fromUtf8(head.data(), static_cast<qsizetype>(head.size()));
    QString shown;
    shown.reserve(text.size());
    for (const QChar character : std::as_const(text)) {
        const char16_t c = character.unicode();
        if (c == u'\n' && keepLineBreaks) {
            shown += character;
        } else if (c == u'\t' || c == u'\n' || c == u'\r' || c == 0x2028 || c == 0x2029) {
            shown += u' ';
        } else if (c < 0x20) {
            shown += QChar(static_cast<char16_t>(0x2400 + c));
        } else if (c == 0x7F) {
            shown += QChar(u'\u2421');
        } else if (c >= 0x80 && c < 0xA0) {
            shown += QChar(QChar::ReplacementCharacter);
        } else if (!turnsDirection(c)) {
            shown += character;
        }
    }
    if (shown.size() > longest || head.size() < utf8.size()) {
        shown = cut(shown, longest);
    }
    return shown;
}

// `text` in lines that are no wider than a tool tip.
QStringList linesOf(const QString& text) {
    QStringList lines;
    QTextLayout layout(text, interfaceFont(metrics::kCallout));
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(metrics::kWidestToolTip);
        lines << text.mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return lines;
}

}  // namespace

QString displayText(std::string_view utf8, qsizetype longest) {
    return cleaned(utf8, longest, false);
}

QString menuText(std::string_view utf8) {
    return displayText(utf8).replace(u'&', QStringLiteral("&&"));
}

QString toolTipText(const QString& text) {
    constexpr qsizetype kLongest = 400;
    if (text.isEmpty()) {
        return text;
    }
    // An HTML element makes Qt take any text for HTML; the text itself is escaped. Qt would break
    // the lines itself so that the tool tip has the shape of a page, however short the text is.
    return QStringLiteral("<div style=\"white-space:pre\">") +
           linesOf(breakable(shortened(text, kLongest))).join(u'\n').toHtmlEscaped() +
           QStringLiteral("</div>");
}

QString breakable(const QString& text) {
    constexpr int kLongestWord = 30;
    constexpr QChar kBreak(0x200B);
    QString result;
    int run = 0;
    for (const QChar character : text) {
        result += character;
        run = character.isSpace() ? 0 : run + 1;
        // A break must not divide a surrogate pair.
        if ((character == u'/' || run >= kLongestWord) && !character.isHighSurrogate()) {
            result += kBreak;
            run = 0;
        }
    }
    return result;
}

QString displayMessage(std::string_view utf8, qsizetype longest) {
    return cleaned(utf8, longest, true);
}

}  // namespace tavo
