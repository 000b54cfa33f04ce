#include "support/Text.h"

#include <charconv>
#include <memory>

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include "support/Utf8.h"

namespace tavo {
namespace {

// The Unicode property White_Space with U+200B, which pasted names bring along.
bool isTrimmed(char32_t scalar) {
    switch (scalar) {
        case 0x0020:
        case 0x0085:
        case 0x00A0:
        case 0x1680:
        case 0x2028:
        case 0x2029:
        case 0x202F:
        case 0x205F:
        case 0x3000:
            return true;
        default:
            return (scalar >= 0x0009 && scalar <= 0x000D) || (scalar >= 0x2000 && scalar <= 0x200B);
    }
}

int graphemeClusterBreak(char32_t scalar) {
    return u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK);
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    std::size_t begin = 0;
    for (std::size_t offset = 0; offset < text.size(); begin = offset) {
        if (!isTrimmed(nextScalar(text, offset))) {
            break;
        }
    }
    std::size_t end = text.size();
    for (std::size_t offset = end; offset > begin; end = offset) {
        if (!isTrimmed(previousScalar(text, offset))) {
            break;
        }
    }
    return text.substr(begin, end - begin);
}

std::string lowercased(std::string_view text) {
    constexpr char32_t kCapitalIWithDot = 0x0130;
    std::string lower;
    lower.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        const char32_t scalar = nextScalar(text, offset);
        if (scalar == kCapitalIWithDot) {
            lower += "i\u0307";
        } else {
            appendScalar(lower, static_cast<char32_t>(u_tolower(static_cast<UChar32>(scalar))));
        }
    }
    return lower;
}

std::string repairedUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t offset = 0; offset < bytes.size();) {
        appendScalar(text, nextScalar(bytes, offset));
    }
    return text;
}

bool isUtf8(std::string_view bytes) {
    for (std::size_t offset = 0; offset < bytes.size();) {
        if (nextScalarOrError(bytes, offset) < 0) {
            return false;
        }
    }
    return true;
}

std::optional<char32_t> firstScalar(std::string_view text) {
    std::size_t offset = 0;
    return text.empty() ? std::nullopt : std::optional(nextScalar(text, offset));
}

std::size_t firstCharacterLength(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> characters(
        ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status), ubrk_close);
    const std::unique_ptr<UText, decltype(&utext_close)> bytes(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status),
        utext_close);
    ubrk_setUText(characters.get(), bytes.get(), &status);
    if (U_FAILURE(status)) {
        std::size_t length = 0;
        nextScalar(text, length);
        return length;
    }
    return static_cast<std::size_t>(ubrk_next(characters.get()));
}

bool isMark(char32_t scalar) {
    constexpr char32_t kFirstMark = 0x0300;
    return scalar >= kFirstMark && graphemeClusterBreak(scalar) == U_GCB_EXTEND;
}

bool isSpacingMark(char32_t scalar) {
    return graphemeClusterBreak(scalar) == U_GCB_SPACING_MARK;
}

std::optional<std::int32_t> processIdentifier(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

}  // namespace tavo
