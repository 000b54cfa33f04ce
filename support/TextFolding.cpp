#include "support/TextFolding.h"

#include <algorithm>
#include <array>
#include <utility>

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include "support/Decomposition.h"
#include "support/Text.h"
#include "support/Utf8.h"

namespace tavo {
namespace {

constexpr char32_t kDotlessI = 0x0131;
constexpr char32_t kDotAbove = 0x0307;
constexpr char32_t kGraphemeJoiner = 0x034F;
constexpr char32_t kFirstVirama = 0x094D;  // before all jamo, too
constexpr char32_t kZeroWidthJoiner = 0x200D;
constexpr char32_t kLatinGreekCyrillicEnd = 0x0510;
constexpr int kAboveClass = 230;
constexpr int kViramaClass = 9;

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
        if (!result_.markRuns.empty() && result_.markRuns.back().end == result_.units.size()) {
            result_.markRuns.back().behind += leadingMarksLength();
        }
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

    // A few letters that are no marks have a class like one, so that marks may pass them.
    [[nodiscard]] std::size_t leadingMarksLength() const {
        std::size_t length = 0;
        for (const Part& part : parts_) {
            if (!isMovableMark(part.scalar)) {
                break;
            }
            length += static_cast<std::size_t>(U8_LENGTH(static_cast<UChar32>(part.scalar)));
        }
        return length;
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
                const std::size_t end = result_.units.size();
                result_.markRuns.push_back({marks.substr(runBegin, runEnd - runBegin), end, end});
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
            entry.isMark = tavo::isMark(scalar);
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
    [[nodiscard]] bool isMark(char32_t scalar) const { return entries_[scalar].isMark; }

private:
    struct Entry {
        char bytes[6];  // no scalar below kEnd needs more
        std::uint8_t length;
        bool isMark;
    };
    std::array<Entry, kEnd> entries_{};
};

// A letter, such as an ideograph, that decomposes into nothing and folds to nothing else.
bool isCaselessLetter(char32_t scalar) {
    const auto letter = static_cast<UChar32>(scalar);
    return u_charType(letter) == U_OTHER_LETTER && isInert(scalar);
}

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
    if (last < kFirstVirama && last != kGraphemeJoiner) {
        return true;
    }
    if (last == kGraphemeJoiner || last == kZeroWidthJoiner ||
        combiningClass(last) == kViramaClass) {
        return !isLetter(next);
    }
    return !syllableGoesOn(last, next);
}

}  // namespace

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
    std::size_t begin = 0;
    for (bool more = true; more;) {
        const std::size_t marksBegin = offset;
        std::size_t marksEnd = offset;
        char32_t last = scalar;
        char32_t next = 0;
        while ((more = offset < text.size())) {
            next = nextScalar(text, offset);
            if (!(next < FoldTable::kEnd ? table.isMark(next) : isMark(next))) {
                break;
            }
            last = next;
            marksEnd = offset;
        }
        if (marksEnd == marksBegin && scalar < FoldTable::kEnd) {
            folder.append(table[scalar]);
        } else if (marksEnd == marksBegin && isCaselessLetter(scalar)) {
            folder.append(text.substr(begin, marksBegin - begin));
        } else {
            folder.append(scalar, text.substr(marksBegin, marksEnd - marksBegin));
        }
        if (!more || mayEndBetween(last, next)) {
            result.bounds.back() |= FoldedText::kEnd;
        }
        scalar = next;
        begin = marksEnd;
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
