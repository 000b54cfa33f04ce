// The collections of texts that the program stores.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tavo {

using StringArray = std::vector<std::string>;
using StringDictionary = std::map<std::string, std::string>;

}  // namespace tavo
