// How text is folded so that equal means "the same but for case", and how a folded needle is
// found in a folded text. For the inside of this folder; pure functions, any thread.
//
// Text is taken apart into clusters: a scalar and the marks after it. Each is decomposed
// canonically, its first scalar folded, its marks put in canonical order. The result is kept as
// UTF-8, in which bytes that stand equal are scalars that stand equal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// Turkish and Azeri pair I with ı and İ with i; everyone else pairs I with i.
enum class Casing { kGeneral, kTurkic };

struct FoldedText {
    static constexpr std::uint8_t kStart = 1;  // a match may begin with this unit
    static constexpr std::uint8_t kEnd = 2;    // a match may end with it

    // Neighbouring marks of the source that may have changed places: a match may begin with each
    // of them, but what it finds there is not a part of the units.
    struct MarkRun {
        std::string_view marks;  // in the source text, which must outlive this
        std::size_t end;         // of the run in the units
        std::size_t behind;  // there, or behind the movable marks that the next cluster begins with
    };

    std::string units;
    std::vector<std::uint8_t> bounds;  // for each unit, kStart and kEnd
    std::vector<MarkRun> markRuns;     // in the order of the text

    [[nodiscard]] bool matches(std::size_t begin, std::size_t end) const {
        return (bounds[begin] & kStart) != 0 && (bounds[end - 1] & kEnd) != 0;
    }
    // As a needle: how many units it takes from a run of marks if it begins within one; 0 when it
    // cannot.
    [[nodiscard]] std::size_t leadLength() const;
};

FoldedText folded(std::string_view text, Casing casing);

// One byte for each ASCII character, the same exactly when the two are the same but for case.
// (The Turkic I becomes a byte that no ASCII character has.)
char foldedAscii(char character, Casing casing);

// Whether `needle` stands in `text`. Linear in their lengths.
bool standsIn(const FoldedText& text, const FoldedText& needle, Casing casing);

// The part of standsIn() that begins within a run of marks.
bool standsAmongMarks(const FoldedText& text, const FoldedText& needle, Casing casing);

// standsIn() when both are ASCII.
bool standsInAscii(std::string_view text, std::string_view needle, Casing casing);

// Without case and, in Latin, Greek and Cyrillic, without diacritics.
std::string foldedToLetters(std::string_view text, Casing casing);

}  // namespace tavo
