// Canonical decomposition, one scalar at a time (Unicode Standard Annex 15). For the inside of this
// folder.
#pragma once

#include <array>
#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include "support/Text.h"

namespace tavo {

inline const UNormalizer2* decomposer() {
    UErrorCode status = U_ZERO_ERROR;
    return unorm2_getNFDInstance(&status);
}

// Canonical_Combining_Class.
inline int combiningClass(char32_t scalar) {
    return u_getCombiningClass(static_cast<UChar32>(scalar));
}

// A mark that may change places with its neighbours.
inline bool isMovableMark(char32_t scalar) {
    return isMark(scalar) && combiningClass(scalar) != 0;
}

// Calls visit(scalar) for each scalar of the canonical decomposition, which may be the scalar
// alone.
template<typename Visit>
void decompose(char32_t scalar, Visit visit) {
    // No decomposition has more than four scalars.
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

// Whether a scalar decomposes into itself and never changes places.
inline bool isInert(char32_t scalar) {
    return unorm2_isInert(decomposer(), static_cast<UChar32>(scalar)) != 0;
}

}  // namespace tavo
