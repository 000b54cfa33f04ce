// The rule of containment written down as plainly as it can be said, without any care for time:
// what the quick ways of answering are compared with. And random texts to compare them on.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// Well-formed UTF-8 only.
bool naivelyContains(std::string_view text, std::string_view needle, bool turkic);

// The pieces of which random texts are made: letters with marks in both spellings, letters that
// fold to several, the letters I, joiners, jamo, viramas, spacing and other marks.
const std::vector<std::u32string>& trickyPieces();

// Up to `pieces` of them, as UTF-8.
std::string randomText(std::mt19937& random, std::size_t pieces);

// Something likely to be in `text`: a part of it with some letters changed in case or spelling.
std::string randomPart(std::mt19937& random, std::string_view text);

}  // namespace tavo
