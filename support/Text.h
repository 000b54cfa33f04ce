// The rules by which the program reads, compares and orders text, over ICU.
//
// Strings are UTF-8. Ill-formed bytes never fail anything: each maximal ill-formed part counts as
// one U+FFFD. Everything here is a pure function of its arguments and may be used on any thread
// (one TextRules from several threads at once included).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// Without white space, line breaks and zero-width spaces at both ends.
std::string_view trimmed(std::string_view text);

// Lower case scalar by scalar, the same in every locale.
std::string lowercased(std::string_view text);

// `bytes` as UTF-8 text, one U+FFFD for each maximal ill-formed part.
std::string repairedUtf8(std::string_view bytes);

[[nodiscard]] bool isUtf8(std::string_view bytes);

// The first scalar of `text` (U+FFFD for an ill-formed one); none when it is empty.
std::optional<char32_t> firstScalar(std::string_view text);

// Grapheme_Cluster_Break = Extend: combining marks, variation selectors, viramas, ZWNJ and the
// like, not ZWJ.
[[nodiscard]] bool isMark(char32_t scalar);

// A spacing mark (Grapheme_Cluster_Break = SpacingMark).
[[nodiscard]] bool isSpacingMark(char32_t scalar);

// The bytes of the first character as a reader sees it: the first extended grapheme cluster
// (Unicode Standard Annex 29), so that flags, families, letters with their marks and CR LF stay
// whole. 0 when `text` is empty.
[[nodiscard]] std::size_t firstCharacterLength(std::string_view text);

// One whole decimal process identifier: an optional sign, ASCII digits, nothing else, within 32
// signed bits.
std::optional<std::int32_t> processIdentifier(std::string_view text);

// The rules that depend on the user's language. Cheap to copy; copies share their tables.
class TextRules {
public:
    // A POSIX or ICU locale name ("it_IT.UTF-8", "tr"); "", "C" and "POSIX" mean en_US.
    explicit TextRules(std::string_view locale);

    // The user's locale: LC_ALL, else LC_COLLATE, else LANG.
    static TextRules forUser();

    // Whether `needle` stands somewhere in `text`, ignoring case. Diacritics count; composed and
    // decomposed spellings are the same; a match ends where a letter with all its marks ends. An
    // empty needle is contained in nothing.
    [[nodiscard]] bool contains(std::string_view text, std::string_view needle) const;

    // Whether the two are the same text ignoring case.
    [[nodiscard]] bool equalIgnoringCase(std::string_view a, std::string_view b) const;

    // What two names have in common when they differ only by case or diacritics: the key by which
    // category names are unique.
    [[nodiscard]] std::string uniqueKey(std::string_view name) const;

    // The file manager's order: negative, zero or positive. Total: zero only for strings that read
    // as the same text.
    [[nodiscard]] int compare(std::string_view a, std::string_view b) const;

    // Positions of `names` in the order of compare(), equal names in the order given. Much
    // quicker than sorting with compare().
    [[nodiscard]] std::vector<std::size_t> sortedOrder(
        std::span<const std::string_view> names) const;

private:
    friend class ContainmentMatcher;
    struct Tables;
    std::shared_ptr<const Tables> tables_;
};

// TextRules::contains() for many needles and many texts: made once for a list, asked for each
// text at a cost that hardly depends on the number of needles.
class ContainmentMatcher {
public:
    ContainmentMatcher(const TextRules& rules, std::span<const std::string_view> needles);
    ~ContainmentMatcher();
    ContainmentMatcher(ContainmentMatcher&&) noexcept;
    ContainmentMatcher& operator=(ContainmentMatcher&&) noexcept;

    // Whether `text` contains at least one of the needles.
    [[nodiscard]] bool matchesAny(std::string_view text) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tavo
