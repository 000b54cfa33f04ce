#include "launching/ProcessPattern.h"

#include "support/Text.h"

namespace tavo {

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
