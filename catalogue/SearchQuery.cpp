#include "catalogue/SearchQuery.h"

#include <optional>
#include <vector>

#include "support/Text.h"

namespace tavo {
namespace {

// Whether what follows a separator leaves it one: a combining character would make the separator
// part of a letter.
bool separates(std::string_view after) {
    constexpr char32_t kZeroWidthJoiner = 0x200D;
    const std::optional<char32_t> next = firstScalar(after);
    return !next || !(isMark(*next) || isSpacingMark(*next) || *next == kZeroWidthJoiner);
}

std::vector<std::string_view> terms(std::string_view query) {
    std::vector<std::string_view> terms;
    std::size_t start = 0;
    const auto finish = [&](std::size_t end) {
        if (end > start) {
            terms.push_back(query.substr(start, end - start));
        }
        start = end + 1;
    };
    for (std::size_t i = 0; i < query.size(); ++i) {
        if (query[i] == ' ' && separates(query.substr(i + 1))) {
            finish(i);
        }
    }
    finish(query.size());
    return terms;
}

bool beginsWithAnyCase(std::string_view term, std::string_view lowerCasePrefix) {
    if (term.size() < lowerCasePrefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < lowerCasePrefix.size(); ++i) {
        const char c = term[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != lowerCasePrefix[i]) {
            return false;
        }
    }
    return true;
}

// The category that `term` asks for, as typed; none when it is not a category term.
std::optional<std::string_view> categoryOf(std::string_view term) {
    for (const std::string_view prefix : {"categoria:", "cat:"}) {
        if (!beginsWithAnyCase(term, prefix)) {
            continue;
        }
        const std::string_view rest = term.substr(prefix.size());
        if (!separates(rest)) {
            continue;
        }
        return rest.empty() ? term.substr(0, prefix.size() - 1) : rest;
    }
    return std::nullopt;
}

}  // namespace

SearchQuery parseQuery(std::string_view query) {
    SearchQuery parsed;
    bool hasCategory = false;
    for (const std::string_view term : terms(query)) {
        if (const auto category = categoryOf(term)) {
            if (!hasCategory) {
                parsed.category = lowercased(*category);
                hasCategory = true;
            }
            continue;
        }
        if (!parsed.text.empty()) {
            parsed.text += ' ';
        }
        parsed.text += term;
    }
    return parsed;
}

}  // namespace tavo
