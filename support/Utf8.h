// Reading and writing UTF-8 one scalar at a time. Ill-formed bytes read as one U+FFFD for each
// maximal ill-formed part (Unicode 15, section 3.9). For the inside of this folder.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <unicode/utf8.h>

namespace tavo {

inline constexpr char32_t kReplacement = 0xFFFD;

// The scalar that begins at `offset`, or a negative number for an ill-formed part. `offset` moves
// behind it; it must be below the size.
inline UChar32 nextScalarOrError(std::string_view text, std::size_t& offset) {
    UChar32 scalar = 0;
// The macro narrows its own bytes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
    U8_NEXT(text.data(), offset, text.size(), scalar);
#pragma GCC diagnostic pop
    return scalar;
}

// The scalar that begins at `offset`, which moves behind it. `offset` must be below the size.
inline char32_t nextScalar(std::string_view text, std::size_t& offset) {
    const auto lead = static_cast<unsigned char>(text[offset]);
    if (lead < 0x80) {
        ++offset;
        return lead;
    }
    const UChar32 scalar = nextScalarOrError(text, offset);
    return scalar < 0 ? kReplacement : static_cast<char32_t>(scalar);
}

// The scalar that ends at `offset`, which moves to its beginning. `offset` must not be 0.
inline char32_t previousScalar(std::string_view text, std::size_t& offset) {
    const auto end = offset;
    // No well-formed scalar is longer than four bytes, and none begins with a trail byte.
    for (std::size_t length = 1; length <= 4 && length <= end; ++length) {
        const auto begin = end - length;
        if (!U8_IS_TRAIL(text[begin])) {
            auto behind = begin;
            const char32_t scalar = nextScalar(text.substr(0, end), behind);
            if (behind == end) {
                offset = begin;
                return scalar;
            }
            break;
        }
    }
    offset = end - 1;
    return kReplacement;
}

inline void appendScalar(std::string& text, char32_t scalar) {
    if (scalar < 0x80) {
        text += static_cast<char>(scalar);
        return;
    }
    char bytes[U8_MAX_LENGTH];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, scalar);
    text.append(bytes, length);
}

inline bool isAscii(std::string_view text) {
    unsigned char all = 0;
    for (const char byte : text) {
        all |= static_cast<unsigned char>(byte);
    }
    return all < 0x80;
}

}  // namespace tavo
