#include <QFontMetrics>
#include <QTextDocument>
#include <string>

#include <gtest/gtest.h>

#include "ui/look/Appearance.h"
#include "ui/look/TextSanitizer.h"

namespace tavo {
namespace {

struct Row {
    const char* name;
    std::string text;
    QString shown;
};

TEST(TextSanitizer, shows_everything_harmlessly_on_one_line) {
    const Row rows[] = {
        {"plain text", "Caffè 日本", QStringLiteral("Caffè 日本")},
        {"markup stays as typed", "<b>x</b> &amp;", QStringLiteral("<b>x</b> &amp;")},
        {"line breaks and tabs become spaces", "a\nb\tc\rd", QStringLiteral("a b c d")},
        {"control characters become their pictures", "a\x01\x1b", QStringLiteral("a␁␛")},
        {"delete becomes its picture", "a\x7f", QStringLiteral("a␡")},
        {"C1 controls are replaced", "a\u0085b", QStringLiteral("a\uFFFDb")},
        {"overrides of direction are dropped", "a\u202Egpj.exe\u202C", QStringLiteral("agpj.exe")},
        {"isolates are dropped", "\u2066x\u2069", QStringLiteral("x")},
        {"ill-formed bytes are replaced", "a\xff", QStringLiteral("a\uFFFD")},
        {"emoji stay whole", "👩‍💻", QStringLiteral("👩‍💻")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(displayText(row.text), row.shown);
    }
}

TEST(TextSanitizer, cuts_long_texts_with_an_ellipsis) {
    const QString shown = displayText(std::string(10'000, 'x'), 50);
    EXPECT_EQ(shown, QString(50, u'x') + u'…');
    EXPECT_EQ(displayText(std::string(50, 'x'), 50), QString(50, u'x'));
}

TEST(TextSanitizer, never_cuts_a_surrogate_pair_in_two) {
    std::string emoji;
    for (int i = 0; i < 100; ++i) {
        emoji += "😀";
    }
    const QString shown = displayText(emoji, 51);
    EXPECT_EQ(shown.size(), 51);
    EXPECT_EQ(shown.back(), u'…');
    EXPECT_TRUE(shown.isValidUtf16());
}

TEST(TextSanitizer, a_menu_entry_is_like_any_other_text_and_its_ampersand_a_letter) {
    EXPECT_EQ(menuText("Q&A"), QStringLiteral("Q&&A"));
    const std::string endless(3000, 'x');
    EXPECT_EQ(menuText(endless), displayText(endless));
}

TEST(TextSanitizer, a_tool_tip_is_plain_and_never_endless) {
    EXPECT_EQ(
        toolTipText(QStringLiteral("Apri Tom & \"Jerry\"")),
        QStringLiteral("<div style=\"white-space:pre\">Apri Tom &amp; &quot;Jerry&quot;</div>"));
    EXPECT_EQ(toolTipText(QStringLiteral("<b>x</b>")).count(QStringLiteral("<b>")), 0);
    EXPECT_LT(toolTipText(QString(10'000, u'x')).size(), 600);
    EXPECT_EQ(toolTipText({}), QString());
}

TEST(TextSanitizer, a_tool_tip_has_lines_as_long_as_can_be_and_no_longer_than_320_pixels) {
    const QString sentence =
        QStringLiteral("Una frase lunga, con parole brevi e medie. ").repeated(4);
    for (const QString& text : {sentence.trimmed(), QString(120, u'W')}) {
        QTextDocument tip;
        tip.setHtml(toolTipText(text));
        const QStringList lines = tip.toPlainText().split(u'\n');
        const QFontMetrics metrics(interfaceFont(12));
        EXPECT_GT(lines.size(), 1);
        for (const QString& line : lines) {
            EXPECT_LE(metrics.horizontalAdvance(line), 320);
        }
        EXPECT_GT(metrics.horizontalAdvance(lines.front()), 240);
    }
    EXPECT_FALSE(toolTipText(QStringLiteral("Apri Note")).contains(u'\n'));
}

TEST(TextSanitizer, long_words_and_paths_can_be_broken) {
    EXPECT_EQ(breakable(QStringLiteral("una frase corta")), QStringLiteral("una frase corta"));
    EXPECT_EQ(breakable(QStringLiteral("/a/b")), QStringLiteral("/\u200Ba/\u200Bb"));
    EXPECT_EQ(breakable(QString(95, u'x')).count(QChar(0x200B)), 3);
}

TEST(TextSanitizer, a_message_keeps_its_line_breaks) {
    EXPECT_EQ(displayMessage("a\nb\x02"), QStringLiteral("a\nb␂"));
}

}  // namespace
}  // namespace tavo
