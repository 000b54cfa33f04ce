// The keywords by which a category fills itself.
#pragma once

#include <string_view>
#include <vector>

namespace tavo {

// The keywords of a rule text: what stands between commas, without white space at its ends, empty
// ones left out. They point into `ruleText`. There is no escaping; a keyword holds no comma.
std::vector<std::string_view> keywordsOf(std::string_view ruleText);

}  // namespace tavo
