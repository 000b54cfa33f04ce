#include "tests/support/NaiveContainment.h"

#include <algorithm>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace tavo {
namespace {

std::u32string scalarsOf(const icu::UnicodeString& text) {
    std::u32string scalars;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        scalars += static_cast<char32_t>(text.char32At(i));
    }
    return scalars;
}

std::u32string scalarsOf(std::string_view text) {
    return scalarsOf(icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size()))));
}

icu::UnicodeString unicode(const std::u32string& scalars) {
    icu::UnicodeString text;
    for (const char32_t scalar : scalars) {
        text.append(static_cast<UChar32>(scalar));
    }
    return text;
}

std::string utf8(const std::u32string& scalars) {
    std::string text;
    unicode(scalars).toUTF8String(text);
    return text;
}

bool extends(char32_t scalar) {
    return u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK) ==
           U_GCB_EXTEND;
}

std::u32string normalized(const std::u32string& scalars, bool composed) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* form = composed ? icu::Normalizer2::getNFCInstance(status)
                                            : icu::Normalizer2::getNFDInstance(status);
    return scalarsOf(form->normalize(unicode(scalars), status));
}

std::u32string foldedCluster(const std::u32string& cluster, bool turkic) {
    std::u32string parts = normalized(cluster, false);
    const char32_t first = parts.front();
    if (turkic && first == U'I') {
        std::size_t dot = 1;
        while (dot < parts.size() && parts[dot] != 0x0307 &&
               u_getCombiningClass(static_cast<UChar32>(parts[dot])) != 0 &&
               u_getCombiningClass(static_cast<UChar32>(parts[dot])) != 230) {
            ++dot;
        }
        const bool dotted = dot < parts.size() && parts[dot] == 0x0307;
        parts[0] = dotted ? U'i' : U'\u0131';
        if (dotted) {
            parts.erase(dot, 1);
        }
        return parts;
    }
    if (first >= 0x1C80 && first <= 0x1C88) {
        return parts;
    }
    return scalarsOf(unicode({first}).foldCase()) + parts.substr(1);
}

std::u32string foldedText(const std::u32string& text, bool turkic) {
    std::u32string result;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t end = begin + 1;
        while (end < text.size() && extends(text[end])) {
            ++end;
        }
        result += foldedCluster(text.substr(begin, end - begin), turkic);
        begin = end;
    }
    return result;
}

bool goesOn(char32_t last, char32_t next) {
    const auto property = [](char32_t scalar, UProperty which) {
        return u_getIntPropertyValue(static_cast<UChar32>(scalar), which);
    };
    const bool joins =
        last == 0x200D || last == 0x034F || property(last, UCHAR_CANONICAL_COMBINING_CLASS) == 9;
    if (joins && (U_GET_GC_MASK(static_cast<UChar32>(next)) & U_GC_L_MASK) != 0) {
        return true;
    }
    const int jamo = property(last, UCHAR_GRAPHEME_CLUSTER_BREAK);
    const int after = property(next, UCHAR_GRAPHEME_CLUSTER_BREAK);
    return (jamo == U_GCB_L &&
            (after == U_GCB_L || after == U_GCB_V || after == U_GCB_LV || after == U_GCB_LVT)) ||
           (jamo == U_GCB_V && (after == U_GCB_V || after == U_GCB_T)) ||
           (jamo == U_GCB_T && after == U_GCB_T);
}

std::size_t below(std::mt19937& random, std::size_t end) {
    return random() % end;
}

}  // namespace

bool naivelyContains(std::string_view text, std::string_view needle, bool turkic) {
    const std::u32string scalars = scalarsOf(text);
    const std::u32string wanted = foldedText(scalarsOf(needle), turkic);
    if (wanted.empty()) {
        return false;
    }
    for (std::size_t begin = 0; begin < scalars.size(); ++begin) {
        for (std::size_t end = begin + 1; end <= scalars.size(); ++end) {
            const bool inside = end < scalars.size() &&
                                (extends(scalars[end]) || goesOn(scalars[end - 1], scalars[end]));
            if (!inside && foldedText(scalars.substr(begin, end - begin), turkic) == wanted) {
                return true;
            }
        }
    }
    return false;
}

const std::vector<std::u32string>& trickyPieces() {
    static const std::vector<std::u32string> pieces = [] {
        std::u32string_view all =
            U"a|A|e|E|s|S|f|i|I|k|K| |1|-|"
            U"\u00E9|e\u0301|\u00C9|E\u0301|\u00DF|\u1E9E|\uFB01|\uFB03|\u017F|\u0149|"
            U"\u03C3|\u03A3|\u03C2|\u0130|\u0131|I\u0307|i\u0307|\u00CC|I\u0300|\u1ECA|\u212A|"
            U"\u1E69|s\u0323\u0307|s\u0307\u0323|\u0301|\u0307|\u0323|\u0345|\u0344|"
            U"\u1FB3|\u03B1\u0345|\u03B9|\u0390|\u01F0|j\u030C|\u1C80|\u0432|"
            U"\U0001F469|\u200D|\U0001F4BB|\U0001F44D|\U0001F3FD|\uFE0F|\u200C|\u034F|"
            U"\u1112|\u1161|\u11AB|\uD55C|\uD558|\u0915|\u093F|\u094D|\u0937|\u093C|\u0958|"
            U"\u09C7|\u09BE|\u09CB|\u0DD9|\u0DCA|\u0DDA|\u0E17|\u0E35|\u0E48|\u304B|\u3099|\u304C|"
            U"\u05E9\u05C1|\uFB2A|\U00010400|\U00010428|\U0001D15E|\U0001D16D|\u0CC0|\u0CBF|\u0CD5|"
            U"\u0CC6|\u0CCB|\uFFFD|\u13A0|\uAB70|"
            U"\u0587|\u0565|\u0582|\u00A0|";
        std::vector<std::u32string> result;
        while (!all.empty()) {
            const std::size_t end = all.find(U'|');
            result.emplace_back(all.substr(0, end));
            all.remove_prefix(end + 1);
        }
        return result;
    }();
    return pieces;
}

std::string randomText(std::mt19937& random, std::size_t pieces) {
    // Few different pieces in each text, so that parts repeat and matches are frequent.
    const auto& all = trickyPieces();
    std::vector<std::u32string> few;
    for (std::size_t count = 1 + below(random, 6); few.size() < count;) {
        few.push_back(all[below(random, below(random, 2) == 0 ? 14 : all.size())]);
    }
    std::u32string text;
    for (std::size_t count = below(random, pieces + 1); count > 0; --count) {
        text += few[below(random, few.size())];
    }
    return utf8(text);
}

std::string randomPart(std::mt19937& random, std::string_view text) {
    std::u32string scalars = scalarsOf(text);
    if (scalars.empty()) {
        return {};
    }
    const std::size_t begin = below(random, scalars.size());
    scalars = scalars.substr(begin, 1 + below(random, scalars.size() - begin));
    switch (below(random, 6)) {
        case 0:
            return utf8(normalized(scalars, true));
        case 1:
            return utf8(normalized(scalars, false));
        case 2:
            return utf8(scalarsOf(unicode(scalars).toUpper(icu::Locale::getEnglish())));
        case 3:
            return utf8(scalarsOf(unicode(scalars).toLower(icu::Locale("tr"))));
        case 4:
            return utf8(scalarsOf(unicode(scalars).foldCase()));
        default:
            return utf8(scalars);
    }
}

}  // namespace tavo
