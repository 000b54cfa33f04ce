// The rule by which a text contains another one, written as plainly as possible and without any
// care for speed: the quick implementations are compared with it. And random texts for that.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// Whether `text` contains `needle`. Both must be well-formed UTF-8.
bool naivelyContains(std::string_view text, std::string_view needle, bool turkic);

// The pieces of which random texts are made: letters with marks in both spellings, letters that
// fold to several, the letters I, joiners, jamo, viramas, spacing and other marks.
const std::vector<std::u32string>& trickyPieces();

// A text of up to `pieces` random ones of trickyPieces(), as UTF-8.
std::string randomText(std::mt19937& random, std::size_t pieces);

// Something likely to be in `text`: a part of it with some letters changed in case or spelling.
std::string randomPart(std::mt19937& random, std::string_view text);

}  // namespace tavo
