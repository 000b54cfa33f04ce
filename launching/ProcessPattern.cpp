#include "launching/ProcessPattern.h"

#include "support/Text.h"

namespace tavo {

namespace {

std::size_t scalarLength(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return length;
}

// A letter and the marks on it are one character.
std::size_t firstCharacterLength(std::string_view text) {
    std::size_t length = text.empty() ? 0 : scalarLength(text);
    for (auto next = firstScalar(text.substr(length)); next && isMark(*next);
         next = firstScalar(text.substr(length))) {
        length += scalarLength(text.substr(length));
    }
    return length;
}

}  // namespace

std::string escapedPattern(std::string_view text) {
    constexpr std::string_view kSpecial = "*?+[(){}^$|\\./";
    std::string escaped;
    for (const char c : text) {
        if (kSpecial.find(c) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

std::string processPattern(std::string_view text) {
    std::string pattern = escapedPattern(text);
    if (!pattern.empty()) {
        pattern.insert(firstCharacterLength(pattern), 1, ']');
        pattern.insert(0, 1, '[');
    }
    return pattern;
}

}  // namespace tavo
