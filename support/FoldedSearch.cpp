// Searching folded text.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <unicode/utf8.h>

#include "support/Decomposition.h"
#include "support/TextFolding.h"
#include "support/Utf8.h"

namespace tavo {
namespace {

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

std::size_t FoldedText::leadLength() const {
    std::size_t offset = 0;
    // U+0345 is the one mark that folds to something else, to a letter.
    constexpr char32_t kIota = 0x03B9;
    const char32_t first = nextScalar(units, offset);
    if (first != kIota && !isMovableMark(first)) {
        return 0;
    }
    std::size_t length = offset;
    while (offset < units.size() && isMovableMark(nextScalar(units, offset))) {
        length = offset;
    }
    return length;
}

bool standsIn(const FoldedText& text, const FoldedText& needle, Casing casing) {
    const std::size_t length = needle.units.size();
    const auto isMatch = [&](std::size_t begin) { return text.matches(begin, begin + length); };
    return anyOccurrence(text.units, needle.units, isMatch) ||
           (!text.markRuns.empty() && standsAmongMarks(text, needle, casing));
}

// Marks from some place of a run to its end fold to movable marks, and nothing behind the run is
// one (but the few that the next cluster may begin with): what they have to be follows from how
// many of them the needle begins with.
bool standsAmongMarks(const FoldedText& text, const FoldedText& needle, Casing casing) {
    const auto needleUnits = std::string_view(needle.units);
    const auto lead = needleUnits.substr(0, needle.leadLength());
    const auto rest = needleUnits.substr(lead.size());
    if (lead.empty()) {
        return false;
    }
    const auto isEnd = [&](std::size_t end) {
        return (text.bounds[end - 1] & FoldedText::kEnd) != 0;
    };
    if (rest.empty()) {
        return std::any_of(text.markRuns.begin(), text.markRuns.end(),
                           [&](const FoldedText::MarkRun& run) {
                               return isEnd(run.end) && endWith(run.marks, lead, casing);
                           });
    }
    const auto leadsTo = [&](const FoldedText::MarkRun& run) {
        const std::size_t others = run.behind - run.end;
        return others < lead.size() &&
               lead.ends_with(std::string_view(text.units).substr(run.end, others)) &&
               endWith(run.marks, lead.substr(0, lead.size() - others), casing);
    };
    auto run = text.markRuns.begin();
    return anyOccurrence(text.units, rest, [&](std::size_t begin) {
        run = std::find_if(run, text.markRuns.end(),
                           [&](const FoldedText::MarkRun& one) { return one.behind >= begin; });
        return run != text.markRuns.end() && run->behind == begin && isEnd(begin + rest.size()) &&
               leadsTo(*run);
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

}  // namespace tavo
