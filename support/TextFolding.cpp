#include "support/TextFolding.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include "support/Text.h"
#include "support/Utf8.h"

namespace tavo {
namespace {

constexpr char32_t kDotlessI = 0x0131;
constexpr char32_t kDotAbove = 0x0307;
constexpr char32_t kIota = 0x03B9;
constexpr char32_t kGraphemeJoiner = 0x034F;
constexpr char32_t kZeroWidthJoiner = 0x200D;
constexpr char32_t kLatinGreekCyrillicEnd = 0x0510;
constexpr int kAboveClass = 230;
constexpr int kViramaClass = 9;

const UNormalizer2* decomposer() {
    UErrorCode status = U_ZERO_ERROR;
    return unorm2_getNFDInstance(&status);
}

int combiningClass(char32_t scalar) {
    return u_getCombiningClass(static_cast<UChar32>(scalar));
}

// Calls visit(scalar) for each scalar of the canonical decomposition, which may be the scalar
// alone.
template<typename Visit>
void decompose(char32_t scalar, Visit visit) {
    // The longest decomposition has four units (Unicode guarantees that none grows).
    std::array<UChar, 16> units{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = unorm2_getDecomposition(decomposer(), static_cast<UChar32>(scalar),
                                                   units.data(), units.size(), &status);
    if (U_FAILURE(status) || length <= 0) {
        visit(scalar);
        return;
    }
    for (int32_t i = 0; i < length;) {
        UChar32 part = 0;
        U16_NEXT(units.data(), i, length, part);
        visit(static_cast<char32_t>(part));
    }
}

// Full case folding of one scalar, whatever the language.
void appendCaseFolded(std::string& result, char32_t scalar) {
    std::array<UChar, 2> source{};
    int32_t sourceLength = 0;
    U16_APPEND_UNSAFE(source.data(), sourceLength, scalar);
    std::array<UChar, 8> units{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = u_strFoldCase(units.data(), units.size(), source.data(), sourceLength,
                                         U_FOLD_CASE_DEFAULT, &status);
    for (int32_t i = 0; i < length;) {
        UChar32 part = 0;
        U16_NEXT(units.data(), i, length, part);
        appendScalar(result, static_cast<char32_t>(part));
    }
}

struct Part {
    char32_t scalar;
    int combiningClass;
    bool isFixedMark;  // the first part of a mark of the source that no other one may pass
};

// Puts each run of marks that may change places in the order of their classes.
void orderCanonically(std::vector<Part>& parts) {
    const auto byClass = [](const Part& a, const Part& b) {
        return a.combiningClass < b.combiningClass;
    };
    const auto isStarter = [](const Part& part) { return part.combiningClass == 0; };
    for (auto begin = parts.begin(); begin != parts.end();) {
        begin = std::find_if_not(begin, parts.end(), isStarter);
        const auto end = std::find_if(begin, parts.end(), isStarter);
        if (!std::is_sorted(begin, end, byClass)) {
            std::stable_sort(begin, end, byClass);
        }
        begin = end;
    }
}

// An I is dotted when a dot above belongs to it; the dot is part of the letter i then.
char32_t foldTurkicI(std::vector<Part>& parts) {
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        if (part->scalar == kDotAbove) {
            parts.erase(part);
            return U'i';
        }
        if (part->combiningClass == 0 || part->combiningClass == kAboveClass) {
            break;
        }
    }
    return kDotlessI;
}

// Folds a text cluster by cluster.
class Folder {
public:
    explicit Folder(Casing casing) : casing_(casing) {}

    void append(char32_t scalar, std::string_view marks) {
        takeApart(scalar, marks);
        orderCanonically(parts_);
        result_.bounds.push_back(FoldedText::kStart);
        appendFirst();
        appendOthers(marks);
        result_.bounds.resize(result_.units.size(), 0);
    }

    // A cluster of one scalar whose folded form is known.
    void append(std::string_view units) {
        result_.units += units;
        result_.bounds.push_back(FoldedText::kStart);
        result_.bounds.resize(result_.units.size(), 0);
    }

    FoldedText& result() { return result_; }

private:
    // A mark of the source, as a part of the marks of its cluster.
    struct Span {
        std::size_t begin;
        std::size_t end;
    };

    void takeApart(char32_t scalar, std::string_view marks) {
        parts_.clear();
        fixedMarks_.clear();
        const auto add = [this](char32_t part) {
            parts_.push_back({part, combiningClass(part), false});
        };
        decompose(scalar, add);
        for (std::size_t offset = 0; offset < marks.size();) {
            const std::size_t begin = offset;
            const std::size_t firstPart = parts_.size();
            decompose(nextScalar(marks, offset), add);
            if (parts_[firstPart].combiningClass == 0) {
                parts_[firstPart].isFixedMark = true;
                fixedMarks_.push_back({begin, offset});
            }
        }
    }

    void appendFirst() {
        const char32_t first = parts_.front().scalar;
        // The letters U+1C80 to U+1C88 are old shapes of Cyrillic ones, and only shapes:
        // searching for the one does not find the other.
        const bool isShape = first >= 0x1C80 && first <= 0x1C88;
        if (casing_ == Casing::kTurkic && first == U'I') {
            appendScalar(result_.units, foldTurkicI(parts_));
        } else if (isShape) {
            appendScalar(result_.units, first);
        } else {
            appendCaseFolded(result_.units, first);
        }
    }

    void appendOthers(std::string_view marks) {
        std::size_t runBegin = 0;
        const auto endRun = [&](std::size_t runEnd) {
            if (runEnd > runBegin) {
                result_.markRuns.push_back(
                    {marks.substr(runBegin, runEnd - runBegin), result_.units.size()});
            }
        };
        auto fixedMark = fixedMarks_.begin();
        for (std::size_t i = 1; i < parts_.size(); ++i) {
            if (parts_[i].isFixedMark) {
                endRun(fixedMark->begin);
                runBegin = fixedMark->end;
                ++fixedMark;
                result_.bounds.resize(result_.units.size(), 0);
                result_.bounds.push_back(FoldedText::kStart);
            }
            appendScalar(result_.units, parts_[i].scalar);
        }
        endRun(marks.size());
    }

    Casing casing_;
    FoldedText result_;
    std::vector<Part> parts_;
    std::vector<Span> fixedMarks_;
};

// What the scalars of Latin, Greek, Cyrillic and their neighbours fold to when no mark follows
// them: nearly all text is made of these.
class FoldTable {
public:
    static constexpr char32_t kEnd = 0x0800;

    explicit FoldTable(Casing casing) {
        for (char32_t scalar = 0; scalar < kEnd; ++scalar) {
            Folder folder(casing);
            folder.append(scalar, {});
            Entry& entry = entries_[scalar];
            const std::string& units = folder.result().units;
            entry.length = static_cast<std::uint8_t>(units.size());
            units.copy(entry.bytes, sizeof entry.bytes);
        }
    }

    static const FoldTable& of(Casing casing) {
        if (casing == Casing::kTurkic) {
            static const FoldTable turkic(Casing::kTurkic);
            return turkic;
        }
        static const FoldTable general(Casing::kGeneral);
        return general;
    }

    [[nodiscard]] std::string_view operator[](char32_t scalar) const {
        return {entries_[scalar].bytes, entries_[scalar].length};
    }

private:
    struct Entry {
        char bytes[7];  // no scalar below kEnd needs more
        std::uint8_t length;
    };
    std::array<Entry, kEnd> entries_{};
};

bool isLetter(char32_t scalar) {
    return u_isalpha(static_cast<UChar32>(scalar)) != 0;
}

// Whether a Hangul syllable that `jamo` is part of goes on with `next` (Unicode Standard Annex 29,
// rules GB6 to GB8).
bool syllableGoesOn(char32_t jamo, char32_t next) {
    const auto type = [](char32_t scalar) {
        return u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_HANGUL_SYLLABLE_TYPE);
    };
    switch (type(jamo)) {
        case U_HST_LEADING_JAMO: {
            const int following = type(next);
            return following != U_HST_NOT_APPLICABLE && following != U_HST_TRAILING_JAMO;
        }
        case U_HST_VOWEL_JAMO:
            return type(next) == U_HST_VOWEL_JAMO || type(next) == U_HST_TRAILING_JAMO;
        case U_HST_TRAILING_JAMO:
            return type(next) == U_HST_TRAILING_JAMO;
        default:
            return false;
    }
}

// Whether a match may end between the last scalar of a cluster and the first of the next one.
bool mayEndBetween(char32_t last, char32_t next) {
    if (last < kGraphemeJoiner) {
        return true;
    }
    if (last == kGraphemeJoiner || last == kZeroWidthJoiner ||
        combiningClass(last) == kViramaClass) {
        return !isLetter(next);
    }
    return !syllableGoesOn(last, next);
}

// Calls visit(position) for each place where `pattern` stands in `text`, overlapping ones
// included, until it answers true. Never looks at a unit of `text` twice (Knuth, Morris, Pratt).
template<typename Visit>
bool anyOccurrence(std::string_view text, std::string_view pattern, Visit visit) {
    std::vector<std::size_t> border(pattern.size() + 1, 0);
    for (std::size_t i = 1, length = 0; i < pattern.size(); ++i) {
        while (length > 0 && pattern[i] != pattern[length]) {
            length = border[length];
        }
        length += pattern[i] == pattern[length] ? 1 : 0;
        border[i + 1] = length;
    }
    for (std::size_t i = 0, length = 0; i < text.size(); ++i) {
        while (length > 0 && (length == pattern.size() || text[i] != pattern[length])) {
            length = border[length];
        }
        length += text[i] == pattern[length] ? 1 : 0;
        if (length == pattern.size() && visit(i + 1 - length)) {
            return true;
        }
    }
    return false;
}

// Whether a tail of `marks`, or all of them, fold to `wanted`.
bool endWith(std::string_view marks, std::string_view wanted, Casing casing) {
    // Folding a mark never changes its decomposed length, so at most one tail is long enough.
    std::size_t offset = marks.size();
    std::size_t length = 0;
    while (offset > 0 && length < wanted.size()) {
        decompose(previousScalar(marks, offset), [&](char32_t part) {
            length += static_cast<std::size_t>(U8_LENGTH(static_cast<UChar32>(part)));
        });
    }
    return length == wanted.size() && folded(marks.substr(offset), casing).units == wanted;
}

}  // namespace

std::size_t FoldedText::secondStart() const {
    std::size_t start = 1;
    while (start < units.size() && (bounds[start] & kStart) == 0) {
        ++start;
    }
    return start;
}

bool FoldedText::beginsWithMovableMark() const {
    std::size_t offset = 0;
    const char32_t first = nextScalar(units, offset);
    // U+0345 is the one mark that folds to something else, to a letter.
    return first == kIota || (isMark(first) && combiningClass(first) != 0);
}

FoldedText folded(std::string_view text, Casing casing) {
    if (text.empty()) {
        return {};
    }
    const FoldTable& table = FoldTable::of(casing);
    Folder folder(casing);
    FoldedText& result = folder.result();
    result.units.reserve(text.size() + text.size() / 2);
    result.bounds.reserve(text.size() + text.size() / 2);
    std::size_t offset = 0;
    char32_t scalar = nextScalar(text, offset);
    for (bool more = true; more;) {
        const std::size_t marksBegin = offset;
        std::size_t marksEnd = offset;
        char32_t last = scalar;
        char32_t next = 0;
        while ((more = offset < text.size())) {
            next = nextScalar(text, offset);
            if (!isMark(next)) {
                break;
            }
            last = next;
            marksEnd = offset;
        }
        if (marksEnd == marksBegin && scalar < FoldTable::kEnd) {
            folder.append(table[scalar]);
        } else {
            folder.append(scalar, text.substr(marksBegin, marksEnd - marksBegin));
        }
        if (!more || mayEndBetween(last, next)) {
            result.bounds.back() |= FoldedText::kEnd;
        }
        scalar = next;
    }
    return std::move(result);
}

char foldedAscii(char character, Casing casing) {
    if (character == 'I' && casing == Casing::kTurkic) {
        return '\x80';
    }
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool standsIn(const FoldedText& text, const FoldedText& needle, Casing casing) {
    const std::size_t length = needle.units.size();
    const auto isMatch = [&](std::size_t begin) { return text.matches(begin, begin + length); };
    return anyOccurrence(text.units, needle.units, isMatch) ||
           (needle.beginsWithMovableMark() && standsAmongMarks(text, needle, casing));
}

// What the marks from some place of a run fold to is all that the needle has before its second
// start: it consists of marks that may change places, and what follows a run does not begin with
// one.
bool standsAmongMarks(const FoldedText& text, const FoldedText& needle, Casing casing) {
    const auto needleUnits = std::string_view(needle.units);
    const auto first = needleUnits.substr(0, needle.secondStart());
    const auto rest = needleUnits.substr(first.size());
    const auto isEnd = [&](std::size_t end) {
        return (text.bounds[end - 1] & FoldedText::kEnd) != 0;
    };
    if (rest.empty()) {
        return std::any_of(text.markRuns.begin(), text.markRuns.end(),
                           [&](const FoldedText::MarkRun& run) {
                               return isEnd(run.end) && endWith(run.marks, first, casing);
                           });
    }
    if (text.markRuns.empty()) {
        return false;
    }
    auto run = text.markRuns.begin();
    return anyOccurrence(text.units, rest, [&](std::size_t begin) {
        run = std::find_if(run, text.markRuns.end(),
                           [&](const FoldedText::MarkRun& one) { return one.end >= begin; });
        return run != text.markRuns.end() && run->end == begin && isEnd(begin + rest.size()) &&
               endWith(run->marks, first, casing);
    });
}

bool standsInAscii(std::string_view text, std::string_view needle, Casing casing) {
    if (needle.size() > text.size()) {
        return false;
    }
    const auto fold = [casing](char character) { return foldedAscii(character, casing); };
    constexpr std::size_t kUsual = 256;
    if (text.size() <= kUsual) {
        std::array<char, kUsual> foldedText;
        std::array<char, kUsual> foldedNeedle;
        std::transform(text.begin(), text.end(), foldedText.begin(), fold);
        std::transform(needle.begin(), needle.end(), foldedNeedle.begin(), fold);
        return std::string_view(foldedText.data(), text.size())
                   .find({foldedNeedle.data(), needle.size()}) != std::string_view::npos;
    }
    std::string foldedText(text);
    std::string foldedNeedle(needle);
    std::transform(text.begin(), text.end(), foldedText.begin(), fold);
    std::transform(needle.begin(), needle.end(), foldedNeedle.begin(), fold);
    return anyOccurrence(foldedText, foldedNeedle, [](std::size_t) { return true; });
}

std::string foldedToLetters(std::string_view text, Casing casing) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        const char32_t scalar = nextScalar(text, offset);
        char32_t base = 0;
        decompose(scalar, [&](char32_t part) { base = base == 0 ? part : base; });
        if (base >= kLatinGreekCyrillicEnd) {
            base = scalar;
        }
        const std::size_t begin = result.size();
        if (casing == Casing::kTurkic && base == U'I') {
            const bool dotted = text.substr(offset).starts_with("\u0307");
            appendScalar(result, dotted ? U'i' : kDotlessI);
        } else {
            appendCaseFolded(result, base);
        }
        std::size_t foldedEnd = begin;
        const bool keepsMarks = nextScalar(result, foldedEnd) >= kLatinGreekCyrillicEnd;
        // Marks belong to letters of other scripts, but for a first one that is Latin, Greek or
        // Cyrillic itself: that is an accent, whatever it stands on.
        for (bool isFirst = true; offset < text.size(); isFirst = false) {
            std::size_t behind = offset;
            const char32_t mark = nextScalar(text, behind);
            if (!isMark(mark)) {
                break;
            }
            if (keepsMarks && !(isFirst && mark < kLatinGreekCyrillicEnd)) {
                appendScalar(result, mark);
            }
            offset = behind;
        }
    }
    return result;
}

}  // namespace tavo
